#pragma once
// The hook through which a scan reuses an unchanged earlier snapshot of the same
// folder, and hands a finished walk back for later reuse. The scan cache subsystem
// implements it; the scanner only knows this interface.
//
// Contract: prepare() and Lease::store() are called on the scanning thread.

#include <memory>
#include <optional>
#include <string>

#include "scan/ScanSnapshot.hpp"

namespace veldan {

class ScanReuse {
public:
    // Keeps the right to store the result of one walk; storing is refused by the
    // implementation when anything changed under the folder while it was measured.
    class Lease {
    public:
        virtual ~Lease() = default;
        virtual void store(const ScanSnapshot& snapshot) = 0;
    };

    struct Prepared {
        std::optional<ScanSnapshot> reusable;  // set: return it without walking
        std::unique_ptr<Lease> lease;          // set when a walk is needed
    };

    virtual ~ScanReuse() = default;
    virtual Prepared prepare(const std::string& path) = 0;
};

}  // namespace veldan
