// The device calls as the device editor makes them through gRPC: the device
// opened with every line and its line names, the type change as one request,
// and the numbered refusals of line writes that no longer fit.

#include <gtest/gtest.h>

#include "tests/ServiceFixture.h"

namespace veldrano::server::testing {
namespace {

class DeviceServiceTest : public ServiceFixture {
protected:
    void SetUp() override { ASSERT_TRUE(client().Login(kPassword).ok()); }

    grpc::Status Open(const std::string& host, const std::string& name, int newType,
                      pb::Device* device) {
        pb::DeviceKey key;
        key.set_host_name(host);
        key.set_name(name);
        key.set_new_type(newType);
        return client().stub->GetDevice(client().Context().get(), key, device);
    }

    grpc::Status ChangeType(const std::string& device, int type, int64_t expectedVersion,
                            pb::CommitReply* reply) {
        pb::DeviceTypeChange change;
        change.set_host_name("alpha");
        change.set_device(device);
        change.set_type(type);
        change.set_expected_version(expectedVersion);
        return client().stub->ChangeDeviceType(client().Context().get(), change, reply);
    }

    grpc::Status SaveLine(const pb::DeviceLine& line, pb::CommitReply* reply) {
        pb::SaveLineRequest request;
        request.set_host_name("alpha");
        request.set_device("isdn1");
        *request.mutable_line() = line;
        return client().stub->SaveDeviceLine(client().Context().get(), request, reply);
    }

    static uint32_t Number(const grpc::Status& status) {
        return ServiceClient::Detail(status).number();
    }
};

TEST_F(DeviceServiceTest, GetDeviceAnswersEveryLineWithItsNameForStoredAndNewDevices) {
    pb::Device isdn;
    ASSERT_TRUE(Open("alpha", "isdn1", 0, &isdn).ok());
    EXPECT_FALSE(isdn.is_new());
    ASSERT_EQ(isdn.secondary_lines_size(), 1);
    EXPECT_EQ(isdn.secondary_lines(0).number(), 2);
    EXPECT_EQ(isdn.secondary_lines(0).version(), 0);
    EXPECT_EQ(isdn.secondary_lines(0).settings().comment(), "Device isdn1");
    EXPECT_EQ(isdn.secondary_lines(0).settings().user_server(), "alpha");
    ASSERT_EQ(isdn.line_names_size(), 2);
    EXPECT_EQ(isdn.line_names(0), "1 B-channel (primary)");
    EXPECT_EQ(isdn.line_names(1), "2 B-channel");

    pb::Device voice;
    ASSERT_TRUE(Open("alpha", "voice1", 6, &voice).ok());
    EXPECT_TRUE(voice.is_new());
    EXPECT_EQ(voice.type(), 6);
    EXPECT_EQ(voice.configured_lines(), 2);
    ASSERT_EQ(voice.line_names_size(), 2);
    EXPECT_EQ(voice.line_names(1), "2 Port");

    // A console that still sends a Key addresses the same device.
    pb::Key oldKey;
    oldKey.set_host_name("alpha");
    oldKey.set_name("isdn1");
    pb::DeviceKey key;
    ASSERT_TRUE(key.ParseFromString(oldKey.SerializeAsString()));
    pb::Device same;
    ASSERT_TRUE(client().stub->GetDevice(client().Context().get(), key, &same).ok());
    EXPECT_EQ(same.SerializeAsString(), isdn.SerializeAsString());

    auto status = Open("nowhere", "isdn1", 0, &same);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::NOT_FOUND);
    EXPECT_EQ(Number(status), 0x81010002u);
}

TEST_F(DeviceServiceTest, ChangeDeviceTypeIsOneRequestThatDeletesTheLines) {
    pb::Device isdn;
    ASSERT_TRUE(Open("alpha", "isdn1", 0, &isdn).ok());
    pb::CommitReply reply;
    ASSERT_TRUE(SaveLine(isdn.secondary_lines(0), &reply).ok());
    ASSERT_EQ(store().GetDevice("alpha", "isdn1").secondary_lines_size(), 1);

    ASSERT_TRUE(ChangeType("isdn1", 6, isdn.version(), &reply).ok());
    EXPECT_EQ(reply.version(), isdn.version() + 1);
    auto changed = store().GetDevice("alpha", "isdn1");
    EXPECT_EQ(changed.type(), 6);
    EXPECT_EQ(changed.configured_lines(), 2);
    EXPECT_EQ(changed.secondary_lines_size(), 0);
    EXPECT_EQ(changed.version(), reply.version());

    // Repeated after a lost answer: refused as stale, not applied twice.
    auto status = ChangeType("isdn1", 6, isdn.version(), &reply);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::ABORTED);
    EXPECT_EQ(Number(status), 0x8101000Eu);
    EXPECT_EQ(Number(ChangeType("isdn1", 77, changed.version(), &reply)), 0x81010007u);
    EXPECT_EQ(Number(ChangeType("ghost", 6, 1, &reply)), 0x81010002u);
    EXPECT_EQ(store().GetDevice("alpha", "isdn1").SerializeAsString(), changed.SerializeAsString());
}

TEST_F(DeviceServiceTest, LineWritesThatNoLongerFitAreRefusedWithTheirNumbers) {
    pb::Device isdn;
    ASSERT_TRUE(Open("alpha", "isdn1", 0, &isdn).ok());
    pb::DeviceLine line = isdn.secondary_lines(0);
    pb::CommitReply reply;

    // The type change took the count down to one line: line 2 is no more.
    ASSERT_TRUE(ChangeType("isdn1", 1, isdn.version(), &reply).ok());
    auto status = SaveLine(line, &reply);
    EXPECT_EQ(Number(status), 0x81010005u);
    line.set_number(1);
    EXPECT_EQ(Number(SaveLine(line, &reply)), 0x81010005u);

    pb::LineRequest remove;
    remove.set_host_name("alpha");
    remove.set_device("isdn1");
    remove.set_number(2);
    pb::Empty empty;
    status = client().stub->DeleteDeviceLine(client().Context().get(), remove, &empty);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::FAILED_PRECONDITION);
    EXPECT_EQ(Number(status), 0x8101000Au);

    // Deleted meanwhile: the device is not found and nothing is written.
    store().DeleteDevice("alpha", "isdn1");
    line.set_number(2);
    status = SaveLine(line, &reply);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::NOT_FOUND);
    EXPECT_EQ(Number(status), 0x81010002u);
    EXPECT_TRUE(store().GetDevice("alpha", "isdn1").is_new());
}

}  // namespace
}  // namespace veldrano::server::testing
