#include "TapService/GrantStore.h"

#include "Tests/TapService/TapLoop.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

namespace quillmere::tap {
namespace {

class GrantStoreTest : public testing::Test {
protected:
    GrantStoreTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "grants-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        writeUsers("anna:x:1000:1000::/home/anna:/bin/sh\nbert:x:1001:1001::/home/bert:/bin/sh\n");
        store.emplace(folder / "deep" / "grants", users());
        store->onRevoked = [this] { ++revocations; };
        EXPECT_TRUE(store->start(loop.get()));
    }
    ~GrantStoreTest() override {
        store.reset();
        std::filesystem::remove_all(folder);
    }

    std::filesystem::path users() const { return folder / "passwd"; }
    /// As the system's tools change it: by a new file in its place.
    void writeUsers(const std::string& lines) const {
        std::ofstream(folder / "passwd+") << lines;
        std::filesystem::rename(folder / "passwd+", users());
    }
    std::string content(const std::string& grant) const {
        std::string text;
        std::ifstream(folder / "deep" / "grants" / grant) >> text;
        return text;
    }

    TapLoop loop;
    std::filesystem::path folder;
    std::optional<GrantStore> store;
    int revocations = 0;
};

TEST_F(GrantStoreTest, NobodyIsGrantedAtFirst) {
    EXPECT_FALSE(store->isGranted(1000));
    EXPECT_FALSE(store->isGranted(0));
}

TEST_F(GrantStoreTest, AGrantIsForOneUserAndOutlastsTheService) {
    EXPECT_TRUE(store->grant(1000));
    EXPECT_TRUE(store->grant(1000));
    const GrantStore later(folder / "deep" / "grants", users());
    EXPECT_TRUE(later.isGranted(1000));
    EXPECT_FALSE(later.isGranted(100));
    EXPECT_FALSE(later.isGranted(10000));
}

TEST_F(GrantStoreTest, ARevokedGrantIsGoneAndIsTold) {
    store->grant(1000);
    store->grant(1001);
    store->revoke(1000);
    EXPECT_FALSE(store->isGranted(1000));
    EXPECT_TRUE(store->isGranted(1001));
    EXPECT_TRUE(loop.runUntil([this] { return revocations > 0; }));
    store->revoke(1000);
}

TEST_F(GrantStoreTest, AnAdministratorMayRemoveTheFile) {
    store->grant(1000);
    std::filesystem::remove(folder / "deep" / "grants" / "1000");
    EXPECT_TRUE(loop.runUntil([this] { return revocations > 0; }));
    EXPECT_FALSE(store->isGranted(1000));
}

TEST_F(GrantStoreTest, AnAdministratorMayMakeTheFile) {
    std::ofstream(folder / "deep" / "grants" / "1000").close();
    EXPECT_TRUE(store->isGranted(1000));
}

TEST_F(GrantStoreTest, AGrantEndsWithTheAccountAndIsNotTheNextOnes) {
    store->grant(1000);
    store->grant(1001);
    writeUsers("bert:x:1001:1001::/home/bert:/bin/sh\n");
    EXPECT_FALSE(store->isGranted(1000));
    EXPECT_TRUE(loop.runUntil([this] { return revocations > 0; }));
    writeUsers("carl:x:1000:1000::/home/carl:/bin/sh\nbert:x:1001:1001::/home/bert:/bin/sh\n");
    EXPECT_FALSE(store->isGranted(1000));
    EXPECT_TRUE(store->isGranted(1001));
}

TEST_F(GrantStoreTest, AnAccountThatWentWhileTheServiceWasAwayTakesItsGrantWithIt) {
    store->grant(1000);
    store.reset();
    writeUsers("bert:x:1001:1001::/home/bert:/bin/sh\n");
    store.emplace(folder / "deep" / "grants", users());
    ASSERT_TRUE(store->start(loop.get()));
    // Even when the same name is given again.
    writeUsers("anna:x:1000:1000::/home/anna:/bin/sh\n");
    EXPECT_FALSE(store->isGranted(1000));
}

TEST_F(GrantStoreTest, AFileThatAnAdministratorMadeBecomesTheUsersOwn) {
    std::ofstream(folder / "deep" / "grants" / "1000").close();
    EXPECT_TRUE(loop.runUntil([this] { return content("1000") == "anna"; }));
    writeUsers("carl:x:1000:1000::/home/carl:/bin/sh\n");
    EXPECT_FALSE(store->isGranted(1000));
}

TEST_F(GrantStoreTest, AnAccountOfANetworkIsGrantedByItsNumber) {
    EXPECT_TRUE(store->grant(70'000));
    EXPECT_TRUE(store->isGranted(70'000));
    EXPECT_EQ(content("70000"), "");
}

TEST_F(GrantStoreTest, WhatIsNoFileGrantsNothing) {
    std::filesystem::create_directory(folder / "deep" / "grants" / "1000");
    std::filesystem::create_symlink("1000", folder / "deep" / "grants" / "1001");
    EXPECT_FALSE(store->isGranted(1000));
    EXPECT_FALSE(store->isGranted(1001));
}

TEST_F(GrantStoreTest, ALinkIsNotFollowed) {
    std::filesystem::create_symlink(folder / "elsewhere", folder / "deep" / "grants" / "1000");
    EXPECT_FALSE(store->grant(1000));
    EXPECT_FALSE(std::filesystem::exists(folder / "elsewhere"));
}

TEST_F(GrantStoreTest, OnlyItsOwnerMayLookInside) {
    struct stat status{};
    ASSERT_EQ(stat((folder / "deep" / "grants").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(GrantStoreTest, AFolderThatCannotBeMadeIsAnError) {
    std::ofstream(folder / "file").close();
    GrantStore impossible(folder / "file" / "grants");
    EXPECT_FALSE(impossible.start(loop.get()));
    EXPECT_FALSE(impossible.grant(1000));
}

}  // namespace
}  // namespace quillmere::tap
