// Devices as the editor opens them and changes their type: every line of the
// count, stored or fresh, the line names, the type change as one commit, and
// the refusals that keep a device's lines consistent with what is stored.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

class DeviceStoreTest : public SeededStore {
protected:
    void SetUp() override {
        SeededStore::SetUp();
        // A DID trunk of six lines with 2, 4 and 5 configured (4 saved twice)
        // and 3 and 6 only counted.
        store->CommitDevice(
            With(store->GetDevice("alpha", "trunk1"),
                 "type: 4 configured_lines: 6 primary { comment: 'Trunk to the PBX' "
                 "user_server: 'alpha' physical_device: '/dev/trunk0' tsi: '+49 89 "
                 "5550 100' enable_send: true }"));
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

    // The server's defaults for a new device's primary line, which a line not
    // yet configured starts from.
    pb::LineSettings Fresh() { return store->GetDevice("alpha", "no-such").primary(); }

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
                      With(Fresh(), "comment: 'Trunk to the PBX' user_server: 'alpha'")
                          .SerializeAsString());
        }
    }
    ASSERT_EQ(d.line_names_size(), 6);
    EXPECT_EQ(d.line_names(0), "1 Trunk line (primary)");
    EXPECT_EQ(d.line_names(5), "6 Trunk line");

    // The plain read that the simulator and the lists use keeps to what is stored.
    EXPECT_EQ(store->GetDevice("alpha", "trunk1").secondary_lines_size(), 3);
}

TEST_F(DeviceStoreTest, OpeningANewNameAnswersADeviceOfTheRequestedTypeWithNamedLines) {
    const pb::DeviceType& basicRate = Store::DeviceTypes()[1];
    auto d = store->OpenDevice("alpha", "new1", basicRate.id());
    EXPECT_TRUE(d.is_new());
    EXPECT_EQ(d.type(), basicRate.id());
    ASSERT_EQ(d.configured_lines(), basicRate.default_lines());
    EXPECT_EQ(d.primary().SerializeAsString(), Fresh().SerializeAsString());
    ASSERT_EQ(d.secondary_lines_size(), 1);
    EXPECT_EQ(d.secondary_lines(0).settings().SerializeAsString(), Fresh().SerializeAsString());
    EXPECT_EQ(d.line_names(0), "1 B-channel (primary)");
    EXPECT_EQ(d.line_names(1), "2 B-channel");
    // No type or an unknown one: the first type of the table.
    for (int type : {0, 99})
        EXPECT_EQ(store->OpenDevice("alpha", "new1", type).type(), Store::DeviceTypes()[0].id());
    // A stored device keeps its own type whatever the request says.
    EXPECT_EQ(store->OpenDevice("alpha", "isdn1", 6).type(), 2);

    // Committed as opened (but for its mandatory fields): the fresh lines and
    // the names are the editor's view, not part of what is stored.
    auto primaryRate = store->OpenDevice("alpha", "pri1", 3);
    ASSERT_EQ(primaryRate.configured_lines(), 30);
    primaryRate.mutable_primary()->set_comment("Primary rate");
    primaryRate.mutable_primary()->set_user_server("alpha");
    EXPECT_EQ(store->CommitDevice(primaryRate), 1);
    auto stored = store->GetDevice("alpha", "pri1");
    EXPECT_EQ(stored.secondary_lines_size(), 0);
    EXPECT_EQ(stored.line_names_size(), 0);
    EXPECT_EQ(store->OpenDevice("alpha", "pri1").secondary_lines(0).settings().comment(),
              "Primary rate");
}

TEST_F(DeviceStoreTest, ATypeChangeDeletesTheLinesAndFitsTheCountInOneCommit) {
    const int64_t v = trunk.version();
    // Six lines fit a primary rate: the count stays, the lines go.
    EXPECT_EQ(store->ChangeDeviceType("alpha", "trunk1", 3, v), v + 1);
    auto d = store->GetDevice("alpha", "trunk1");
    EXPECT_EQ(d.type(), 3);
    EXPECT_EQ(d.configured_lines(), 6);
    EXPECT_EQ(d.secondary_lines_size(), 0);
    EXPECT_EQ(d.primary().SerializeAsString(), trunk.primary().SerializeAsString());
    EXPECT_EQ(store->OpenDevice("alpha", "trunk1").line_names(5), "6 B-channel");

    // A basic rate takes two lines at most.
    EXPECT_EQ(store->ChangeDeviceType("alpha", "trunk1", 2, v + 1), v + 2);
    EXPECT_EQ(store->GetDevice("alpha", "trunk1").configured_lines(), 2);
}

TEST_F(DeviceStoreTest, ARefusedTypeChangeWritesNothing) {
    const int64_t v = trunk.version();
    // Sent again after its answer was lost, a change is refused as stale; the
    // version is checked before the type.
    EXPECT_REFUSED(store->ChangeDeviceType("alpha", "trunk1", 3, v - 1),
                   pb::ERROR_VERSION_CONFLICT);
    EXPECT_REFUSED(store->ChangeDeviceType("alpha", "trunk1", 42, v + 1),
                   pb::ERROR_VERSION_CONFLICT);
    EXPECT_REFUSED(store->ChangeDeviceType("alpha", "trunk1", 10, v), pb::ERROR_UNKNOWN_REFERENCE);
    EXPECT_REFUSED(store->ChangeDeviceType("alpha", "ghost", 3, 1), pb::ERROR_NOT_FOUND);

    // Lines, type, count and version all as they were.
    EXPECT_EQ(store->GetDevice("alpha", "trunk1").SerializeAsString(), trunk.SerializeAsString());
}

TEST_F(DeviceStoreTest, LineWritesKeepToTheCountAndToADeviceThatIsThere) {
    // A line number outside 2 .. the count is no secondary line.
    for (int number : {1, 7}) EXPECT_REFUSED(SaveLine(number, 0), pb::ERROR_OUT_OF_RANGE);
    // Only configured lines can be deleted, not ones merely counted or
    // beyond the count, and never the primary.
    EXPECT_REFUSED(store->DeleteDeviceLine("alpha", "trunk1", 1), pb::ERROR_INVALID_ARGUMENT);
    EXPECT_REFUSED(store->DeleteDeviceLine("alpha", "trunk1", 3), pb::ERROR_LINE_NOT_CONFIGURED);
    store->DeleteDeviceLine("alpha", "trunk1", 2);
    // Lowering the count drops the lines beyond it: of 2, 4 and 5 only 4 is left.
    store->CommitDevice(With(store->GetDevice("alpha", "trunk1"), "configured_lines: 4"));
    auto left = store->GetDevice("alpha", "trunk1");
    ASSERT_EQ(left.secondary_lines_size(), 1);
    EXPECT_EQ(left.secondary_lines(0).number(), 4);

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
}

}  // namespace
}  // namespace veldrano::server::testing
