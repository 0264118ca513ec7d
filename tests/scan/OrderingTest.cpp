// The visiting order of entries and the progress throttle.

#include <gtest/gtest.h>

#include "scan/EntryOrder.hpp"
#include "scan/ScanProgressThrottle.hpp"

namespace veldan {

namespace {

std::vector<ScanEntry> entries(std::initializer_list<const char*> names) {
    std::vector<ScanEntry> out;
    for (const char* name : names)
        out.push_back(ScanEntry{name, {}});
    return out;
}

std::vector<std::string> names(const std::vector<ScanEntry>& list) {
    std::vector<std::string> out;
    for (const auto& entry : list)
        out.push_back(entry.name);
    return out;
}

}  // namespace

TEST(EntryOrder, WellKnownNamesFirstThenFileBrowserOrder) {
    const std::string home = "/home/me";
    EXPECT_EQ(names(EntryOrder::prioritized(
                  "/", entries({"zeta", "System", "Users", "etc", "Library"}), home)),
              (std::vector<std::string>{"Users", "Library", "System", "etc", "zeta"}));
    EXPECT_EQ(names(EntryOrder::prioritized(
                  home, entries({"file10", ".cache", "File2", "Downloads", "Documents"}), home)),
              (std::vector<std::string>{"Documents", "Downloads", ".cache", "File2", "file10"}));
    EXPECT_EQ(names(EntryOrder::prioritized("/home", entries({"alice", "me", "bob"}), home)),
              (std::vector<std::string>{"me", "alice", "bob"}));
}

TEST(EntryOrder, OtherFoldersKeepTheListingOrder) {
    EXPECT_FALSE(EntryOrder::hasPriorityTable("/home/me/code", "/home/me"));
    EXPECT_EQ(
        names(EntryOrder::prioritized("/home/me/code", entries({"b", "a", "Users"}), "/home/me")),
        (std::vector<std::string>{"b", "a", "Users"}));
}

TEST(ScanProgressThrottle, ReportsProgressEveryQuarterSecondAndPartialsEveryFourTenths) {
    ScanProgressThrottle throttle(true);
    auto due = throttle.fileUpdates(true, 10.0);
    EXPECT_TRUE(due.progress);
    EXPECT_TRUE(due.partial);
    due = throttle.fileUpdates(true, 10.2);
    EXPECT_FALSE(due.progress);
    EXPECT_FALSE(due.partial);
    due = throttle.fileUpdates(true, 10.3);
    EXPECT_TRUE(due.progress);
    EXPECT_FALSE(due.partial);
    due = throttle.fileUpdates(false, 10.45);  // due, but nothing new was measured
    EXPECT_FALSE(due.partial);
    due = throttle.fileUpdates(true, 10.46);
    EXPECT_TRUE(due.partial);

    ScanProgressThrottle quiet(false);
    EXPECT_FALSE(quiet.fileUpdates(true, 100.0).partial);
}

}  // namespace veldan
