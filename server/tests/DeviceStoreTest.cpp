// Devices as the editor opens them and changes their type: every line of the
// count, stored or fresh, the line names, the type change as one commit, and
// the refusals that keep a device's lines consistent with what is stored.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/DemoTestSupport.h"
#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

class DeviceStoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        SeedInstallation(*store);
        // A DID trunk of six lines with 2, 4 and 5 configured (4 saved twice)
        // and 3 and 6 only counted.
        auto d = store->GetDevice("alpha", "trunk1");
        d.set_type(4);
        d.set_configured_lines(6);
        d.mutable_primary()->set_comment("Trunk to the PBX");
        d.mutable_primary()->set_user_server("alpha");
        d.mutable_primary()->set_physical_device("/dev/trunk0");
        d.mutable_primary()->set_tsi("+49 89 5550 100");
        d.mutable_primary()->set_enable_send(true);
        store->CommitDevice(d);
        for (int number : {2, 4, 5}) SaveLine(number, 0);
        SaveLine(4, 1);
        trunk = store->GetDevice("alpha", "trunk1");
    }

    int64_t SaveLine(int number, int64_t version) {
        pb::DeviceLine line;
        line.set_number(number);
        line.set_version(version);
        *line.mutable_settings() = store->GetDevice("alpha", "trunk1").primary();
        line.mutable_settings()->set_comment("Trunk line " + std::to_string(number));
        line.mutable_settings()->set_physical_device("/dev/trunk" + std::to_string(number - 1));
        return store->SaveDeviceLine("alpha", "trunk1", line);
    }

    // The settings a line not yet configured starts with: the server's
    // defaults for a new device's primary line, under the primary's comment
    // and user server.
    pb::LineSettings Fresh(const std::string& comment, const std::string& userServer) {
        pb::LineSettings l = store->GetDevice("alpha", "no-such").primary();
        l.set_comment(comment);
        l.set_user_server(userServer);
        return l;
    }

    TempStore store;
    pb::Device trunk;
};

TEST_F(DeviceStoreTest, OpeningAStoredDeviceAnswersEveryLineOfItsCount) {
    auto d = store->OpenDevice("alpha", "trunk1");
    EXPECT_FALSE(d.is_new());
    EXPECT_EQ(d.version(), trunk.version());
    ASSERT_EQ(d.secondary_lines_size(), 5);
    const std::vector<int64_t> versions = {1, 0, 2, 1, 0};
    for (int i = 0; i < 5; ++i) {
        const pb::DeviceLine& line = d.secondary_lines(i);
        SCOPED_TRACE("line " + std::to_string(line.number()));
        EXPECT_EQ(line.number(), i + 2);
        EXPECT_EQ(line.version(), versions[i]);
        if (line.version() > 0) {
            EXPECT_EQ(line.settings().comment(), "Trunk line " + std::to_string(line.number()));
        } else {
            // Not the primary's copy: only its comment and user server carry over.
            EXPECT_EQ(line.settings().SerializeAsString(),
                      Fresh("Trunk to the PBX", "alpha").SerializeAsString());
        }
    }
    ASSERT_EQ(d.line_names_size(), 6);
    EXPECT_EQ(d.line_names(0), "1 Trunk line (primary)");
    EXPECT_EQ(d.line_names(5), "6 Trunk line");

    // The plain read that the simulator and the lists use keeps to what is stored.
    auto stored = store->GetDevice("alpha", "trunk1");
    ASSERT_EQ(stored.secondary_lines_size(), 3);
    EXPECT_EQ(stored.secondary_lines(1).number(), 4);
    EXPECT_EQ(stored.line_names_size(), 0);
    EXPECT_EQ(store->ListDevices("alpha").back().secondary_lines_size(), 3);
}

TEST_F(DeviceStoreTest, OpeningANewNameAnswersADeviceOfTheRequestedType) {
    auto primaryRate = store->OpenDevice("alpha", "pri1", 3);
    EXPECT_TRUE(primaryRate.is_new());
    EXPECT_EQ(primaryRate.type(), 3);
    EXPECT_EQ(primaryRate.configured_lines(), 30);
    EXPECT_EQ(primaryRate.primary().SerializeAsString(), Fresh("", "").SerializeAsString());
    ASSERT_EQ(primaryRate.secondary_lines_size(), 29);
    for (const pb::DeviceLine& line : primaryRate.secondary_lines()) {
        EXPECT_EQ(line.version(), 0);
        EXPECT_EQ(line.settings().SerializeAsString(), Fresh("", "").SerializeAsString());
    }
    EXPECT_EQ(primaryRate.secondary_lines(28).number(), 30);
    ASSERT_EQ(primaryRate.line_names_size(), 30);

    // No type or an unknown one: the first type of the table.
    const pb::DeviceType& first = Store::DeviceTypes().front();
    for (int type : {0, 99, -1}) {
        SCOPED_TRACE(type);
        auto d = store->OpenDevice("alpha", "new1", type);
        EXPECT_EQ(d.type(), first.id());
        EXPECT_EQ(d.configured_lines(), first.default_lines());
        EXPECT_EQ(d.secondary_lines_size(), first.default_lines() - 1);
    }
    // A stored device keeps its own type whatever the request says.
    EXPECT_EQ(store->OpenDevice("alpha", "isdn1", 6).type(), 2);
    EXPECT_REFUSED(store->OpenDevice("nowhere", "isdn1"), pb::ERROR_NOT_FOUND);

    // Committed as opened (but for its mandatory fields): the fresh lines and
    // the names are the editor's view, not part of what is stored.
    primaryRate.mutable_primary()->set_comment("Primary rate");
    primaryRate.mutable_primary()->set_user_server("alpha");
    EXPECT_EQ(store->CommitDevice(primaryRate), 1);
    auto stored = store->GetDevice("alpha", "pri1");
    EXPECT_EQ(stored.secondary_lines_size(), 0);
    EXPECT_EQ(stored.line_names_size(), 0);
    auto reopened = store->OpenDevice("alpha", "pri1");
    EXPECT_EQ(reopened.secondary_lines(0).settings().comment(), "Primary rate");
    EXPECT_EQ(reopened.secondary_lines(0).settings().user_server(), "alpha");
}

TEST_F(DeviceStoreTest, LinesAreNamedAfterTheKindOfLineTheTypeHas) {
    const std::vector<std::pair<int, std::string>> kinds = {
        {1, "Line"}, {2, "B-channel"}, {3, "B-channel"}, {4, "Trunk line"}, {5, "Line"},
        {6, "Port"}, {7, "Line"},      {8, "Line"},      {9, "Line"},
    };
    ASSERT_EQ(kinds.size(), Store::DeviceTypes().size());
    for (const auto& [type, kind] : kinds) {
        SCOPED_TRACE(type);
        auto d = store->OpenDevice("alpha", "new1", type);
        ASSERT_EQ(d.line_names_size(), d.configured_lines());
        EXPECT_EQ(d.line_names(0), "1 " + kind + " (primary)");
        for (int n = 2; n <= d.configured_lines(); ++n)
            EXPECT_EQ(d.line_names(n - 1), std::to_string(n) + " " + kind);
    }
}

TEST_F(DeviceStoreTest, ATypeChangeDeletesTheLinesAndFitsTheCountInOneCommit) {
    const int64_t v = trunk.version();
    // Six lines fit a primary rate: the count stays, the lines go.
    EXPECT_EQ(store->ChangeDeviceType("alpha", "trunk1", 3, v), v + 1);
    auto d = store->GetDevice("alpha", "trunk1");
    EXPECT_EQ(d.type(), 3);
    EXPECT_EQ(d.configured_lines(), 6);
    EXPECT_EQ(d.version(), v + 1);
    EXPECT_EQ(d.secondary_lines_size(), 0);
    EXPECT_EQ(d.primary().SerializeAsString(), trunk.primary().SerializeAsString());
    EXPECT_EQ(store->OpenDevice("alpha", "trunk1").line_names(5), "6 B-channel");

    // A basic rate takes two lines at most, an analogue line one.
    SaveLine(2, 0);
    EXPECT_EQ(store->ChangeDeviceType("alpha", "trunk1", 2, v + 1), v + 2);
    d = store->GetDevice("alpha", "trunk1");
    EXPECT_EQ(d.configured_lines(), 2);
    EXPECT_EQ(d.secondary_lines_size(), 0);
    EXPECT_EQ(store->ChangeDeviceType("alpha", "trunk1", 1, v + 2), v + 3);
    EXPECT_EQ(store->GetDevice("alpha", "trunk1").configured_lines(), 1);

    // Sent again after its answer was lost, the change is refused as stale.
    EXPECT_REFUSED(store->ChangeDeviceType("alpha", "trunk1", 1, v + 2),
                   pb::ERROR_VERSION_CONFLICT);
    EXPECT_EQ(store->GetDevice("alpha", "trunk1").version(), v + 3);
}

TEST_F(DeviceStoreTest, ARefusedTypeChangeWritesNothing) {
    const int64_t v = trunk.version();
    for (int64_t stale : {int64_t{0}, v + 1, v + 7}) {
        SCOPED_TRACE(stale);
        EXPECT_REFUSED(store->ChangeDeviceType("alpha", "trunk1", 3, stale),
                       pb::ERROR_VERSION_CONFLICT);
    }
    // The version is checked before the type.
    EXPECT_REFUSED(store->ChangeDeviceType("alpha", "trunk1", 42, v + 1),
                   pb::ERROR_VERSION_CONFLICT);
    for (int unknown : {0, 10, 42}) {
        SCOPED_TRACE(unknown);
        EXPECT_REFUSED(store->ChangeDeviceType("alpha", "trunk1", unknown, v),
                       pb::ERROR_UNKNOWN_REFERENCE);
    }
    EXPECT_REFUSED(store->ChangeDeviceType("alpha", "ghost", 3, 1), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(store->ChangeDeviceType("nowhere", "trunk1", 3, v), pb::ERROR_NOT_FOUND);

    // Lines, type, count and version all as they were.
    EXPECT_EQ(store->GetDevice("alpha", "trunk1").SerializeAsString(), trunk.SerializeAsString());
}

TEST_F(DeviceStoreTest, WritesToADeviceGoneOrChangedMeanwhileAreRefused) {
    // Deleted while its editor was open: a line saved from it is refused and
    // leaves nothing behind for a later device of the same name.
    auto open = store->OpenDevice("alpha", "isdn1");
    pb::DeviceLine line = open.secondary_lines(0);
    ASSERT_EQ(line.version(), 0);
    store->DeleteDevice("alpha", "isdn1");
    EXPECT_REFUSED(store->SaveDeviceLine("alpha", "isdn1", line), pb::ERROR_NOT_FOUND);
    open.set_is_new(true);
    store->CommitDevice(open);
    EXPECT_EQ(store->GetDevice("alpha", "isdn1").secondary_lines_size(), 0);

    // Changed meanwhile: the second save of the same version is refused.
    auto first = store->GetDevice("alpha", "trunk1"), second = first;
    first.mutable_primary()->set_comment("First");
    store->CommitDevice(first);
    second.mutable_primary()->set_comment("Second");
    EXPECT_REFUSED(store->CommitDevice(second), pb::ERROR_VERSION_CONFLICT);
    EXPECT_EQ(store->GetDevice("alpha", "trunk1").primary().comment(), "First");

    // A line number outside 2 .. the count is no secondary line.
    for (int number : {0, 1, 7}) {
        SCOPED_TRACE(number);
        EXPECT_REFUSED(SaveLine(number, 0), pb::ERROR_OUT_OF_RANGE);
    }
    // Only configured lines can be deleted, not ones merely counted.
    EXPECT_REFUSED(store->DeleteDeviceLine("alpha", "trunk1", 3), pb::ERROR_LINE_NOT_CONFIGURED);
    EXPECT_REFUSED(store->DeleteDeviceLine("alpha", "trunk1", 7), pb::ERROR_LINE_NOT_CONFIGURED);
    EXPECT_EQ(store->GetDevice("alpha", "trunk1").secondary_lines_size(), 3);
}

TEST_F(DeviceStoreTest, EveryDeviceCallOnAServerGoneMeanwhileIsNotFound) {
    auto open = store->OpenDevice("alpha", "trunk1");
    store->DeleteServer("alpha");
    EXPECT_REFUSED(store->GetDevice("alpha", "trunk1"), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(store->OpenDevice("alpha", "trunk1"), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(store->CommitDevice(open), pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(store->SaveDeviceLine("alpha", "trunk1", open.secondary_lines(1)),
                   pb::ERROR_NOT_FOUND);
    EXPECT_REFUSED(store->ChangeDeviceType("alpha", "trunk1", 3, open.version()),
                   pb::ERROR_NOT_FOUND);
    EXPECT_TRUE(store->GetServer("alpha").is_new());
}

}  // namespace
}  // namespace veldrano::server::testing
