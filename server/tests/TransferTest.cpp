// Copy and move between servers and gateways: one commit in the order the
// console's Paste promises, everything rolled back on a refusal, and the one
// loss that order keeps on purpose (a cut object whose name the target has).

#include <gtest/gtest.h>

#include "tests/StoreFixtures.h"

namespace veldrano::server::testing {
namespace {

class TransferTest : public SeededStore {
protected:
    void SetUp() override {
        SeededStore::SetUp();
        store->SetUserPasswordHash("alpha", "alice", "hash-of-alice");
    }
    // Pastes the object of kind named name from source onto target, cut or copied.
    pb::TransferOutcome Paste(const char* kind, const char* source, const char* name,
                              const char* target, bool cut) {
        return store->TransferObject(
            With(pb::TransferRequest(), "kind: '" + std::string(kind) + "' source: '" + source +
                                            "' name: '" + name + "' target: '" + target +
                                            "' cut: " + (cut ? "true" : "false")));
    }
};

TEST_F(TransferTest, ACopiedUserKeepsEveryPropertyAndItsPassword) {
    EXPECT_EQ(Paste("User", "alpha", "alice", "beta", false), pb::TRANSFERRED);
    const pb::User source = store->GetUser("alpha", "alice");
    const pb::User copy = store->GetUser("beta", "alice");
    EXPECT_EQ(With(copy, "host_name: 'alpha'").SerializeAsString(), source.SerializeAsString());
    EXPECT_TRUE(copy.password_set());
    // Cut: the source goes, the target gets it.
    EXPECT_EQ(Paste("User", "beta", "bob", "alpha", true), pb::TRANSFERRED);
    EXPECT_TRUE(store->GetUser("beta", "bob").is_new());
    EXPECT_FALSE(store->GetUser("alpha", "bob").is_new());
}

TEST_F(TransferTest, MissingOrBlockingEndsStopChangeNothing) {
    EXPECT_EQ(Paste("User", "alpha", "nobody", "beta", true), pb::TRANSFER_STOPPED);
    EXPECT_EQ(Paste("User", "alpha", "alice", "omega", true), pb::TRANSFER_STOPPED);
    store->SetServerOnline("beta", false);
    EXPECT_EQ(Paste("User", "alpha", "alice", "beta", true), pb::TRANSFER_STOPPED);
    EXPECT_FALSE(store->GetUser("alpha", "alice").is_new());
    EXPECT_REFUSED(Paste("Group", "alpha", "Sales", "beta", false), pb::ERROR_INVALID_ARGUMENT);
}

TEST_F(TransferTest, ACutOntoATakenNameLeavesTheSourceOnPurpose) {
    // A copy onto a taken name adds nothing and removes nothing.
    Paste("User", "alpha", "alice", "beta", false);
    const int64_t copied = store->GetUser("beta", "alice").version();
    EXPECT_EQ(Paste("User", "alpha", "alice", "beta", false), pb::TRANSFER_TARGET_EXISTS);
    EXPECT_FALSE(store->GetUser("alpha", "alice").is_new());
    // Cut: the source's user is gone, the target's is the one it had.
    EXPECT_EQ(Paste("User", "alpha", "alice", "beta", true), pb::TRANSFER_TARGET_EXISTS);
    EXPECT_TRUE(store->GetUser("alpha", "alice").is_new());
    EXPECT_EQ(store->GetUser("beta", "alice").version(), copied);
}

TEST_F(TransferTest, ARefusalOnTheTargetUndoesTheCut) {
    // alice prints on laser1, which beta does not have.
    store->CommitUser(With(store->GetUser("alpha", "alice"), "printer: 'laser1'"));
    EXPECT_REFUSED(Paste("User", "alpha", "alice", "beta", true), pb::ERROR_UNKNOWN_REFERENCE);
    EXPECT_FALSE(store->GetUser("alpha", "alice").is_new());
    EXPECT_TRUE(store->GetUser("beta", "alice").is_new());
    EXPECT_EQ(store->GetGroup("Sales").members_size(), 2);
    // A printer that a user prints on does not leave its server, and a copy
    // onto a server without the printer role is refused.
    EXPECT_REFUSED(Paste("Printer", "alpha", "laser1", "gamma", true), pb::ERROR_STILL_NAMED);
    EXPECT_REFUSED(Paste("Printer", "alpha", "laser1", "beta", false), pb::ERROR_ROLE_MISSING);
    EXPECT_FALSE(store->GetPrinter("alpha", "laser1").is_new());
    EXPECT_TRUE(store->GetPrinter("gamma", "laser1").is_new());
}

TEST_F(TransferTest, PrintersDevicesWithTheirLinesAndGatewayUsers) {
    EXPECT_EQ(Paste("Printer", "alpha", "laser1", "gamma", true), pb::TRANSFERRED);
    EXPECT_EQ(store->GetPrinter("gamma", "laser1").filter_command(), "lpr -P laser1");
    EXPECT_TRUE(store->GetPrinter("alpha", "laser1").is_new());

    // A device moves with its secondary line.
    ConfigureSecondLine(*store);
    store->CommitServer(With(store->GetServer("gamma"), "device_server: true"));
    EXPECT_EQ(Paste("Device", "alpha", "isdn1", "gamma", false), pb::TRANSFERRED);
    const pb::Device copy = store->GetDevice("gamma", "isdn1");
    ASSERT_EQ(copy.secondary_lines_size(), 1);
    EXPECT_EQ(copy.secondary_lines(0).settings().comment(), "Second channel");
    EXPECT_EQ(copy.configured_lines(), store->GetDevice("alpha", "isdn1").configured_lines());

    for (const char* name : {"smtp.example.com", "x400.example.net"})
        store->CommitGateway(With(pb::Gateway(), "is_new: true name: '" + std::string(name) + "'"));
    store->CommitGatewayUser(
        With(store->GetGatewayUser("smtp.example.com", "sales@example.com"), "extension: '200'"));
    EXPECT_EQ(
        Paste("GatewayUser", "smtp.example.com", "sales@example.com", "x400.example.net", true),
        pb::TRANSFERRED);
    EXPECT_EQ(store->GetGatewayUser("x400.example.net", "sales@example.com").extension(), "200");
    EXPECT_TRUE(store->GetGatewayUser("smtp.example.com", "sales@example.com").is_new());
}

}  // namespace
}  // namespace veldrano::server::testing
