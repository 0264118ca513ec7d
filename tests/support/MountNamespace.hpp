#pragma once
// Tests that mount: the outer test runs this very binary again under `unshare -m` (a
// private mount namespace, so nothing leaks to the machine), where only the DISABLED_
// cases of a fixture derived from InsideMountNamespace run; outside they skip.

#include <gtest/gtest.h>

#include <string>

#include "tests/support/TempDir.hpp"

namespace veldan::test {

bool insideMountNamespace();

// Runs the DISABLED_ cases of `suite` in a private mount namespace and expects
// `count` of them to pass; skips when namespaces are not available here.
void runInMountNamespace(const std::string& suite, int count);

class InsideMountNamespace : public ::testing::Test {
protected:
    void SetUp() override {
        if (!insideMountNamespace()) GTEST_SKIP();
    }
};

// A mount for the life of the object: a fresh tmpfs on a new folder, or `source` bound
// onto the existing folder `target`.
class Mount {
public:
    explicit Mount(const char* tmpfsOptions = "size=16m,mode=755");
    Mount(const std::string& source, const std::string& target);
    ~Mount();
    Mount(const Mount&) = delete;
    Mount& operator=(const Mount&) = delete;

    const std::string& top() const { return target_; }
    std::string operator/(const std::string& relative) const { return target_ + "/" + relative; }
    void makeReadOnly() const;

private:
    TempDir folder_;
    std::string target_;
};

}  // namespace veldan::test
