// The device calls as the device editor makes them through gRPC: the device
// as the editor opens it, the type change as one request, and the numbered
// refusals of line writes that no longer fit.

#include <gtest/gtest.h>

#include "tests/ServiceFixture.h"

namespace veldrano::server::testing {
namespace {

class DeviceServiceTest : public ServiceFixture {
protected:
    void SetUp() override { ASSERT_TRUE(client().Login(kHostPassword).ok()); }

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
};

TEST_F(DeviceServiceTest, GetDeviceAnswersTheDeviceAsTheEditorOpensIt) {
    // Every line of the count and the line names, of a stored device and of a
    // new one of the requested type.
    pb::Device isdn, voice;
    ASSERT_TRUE(Open("alpha", "isdn1", 0, &isdn).ok());
    EXPECT_EQ(isdn.SerializeAsString(), store().OpenDevice("alpha", "isdn1").SerializeAsString());
    ASSERT_TRUE(Open("alpha", "voice1", 6, &voice).ok());
    EXPECT_EQ(voice.SerializeAsString(),
              store().OpenDevice("alpha", "voice1", 6).SerializeAsString());

    // A console that still sends a Key addresses the same device.
    pb::DeviceKey key;
    ASSERT_TRUE(key.ParseFromString(Key("alpha", "isdn1").SerializeAsString()));
    pb::Device same;
    ASSERT_TRUE(client().stub->GetDevice(client().Context().get(), key, &same).ok());
    EXPECT_EQ(same.SerializeAsString(), isdn.SerializeAsString());

    auto status = Open("nowhere", "isdn1", 0, &same);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::NOT_FOUND);
    EXPECT_EQ(Number(status), 0x81010002u);
}

TEST_F(DeviceServiceTest, ChangeDeviceTypeIsOneRequestAndLineWritesThatNoLongerFitAreRefused) {
    pb::Device isdn;
    ASSERT_TRUE(Open("alpha", "isdn1", 0, &isdn).ok());
    pb::DeviceLine line = isdn.secondary_lines(0);
    pb::CommitReply reply;
    ASSERT_TRUE(SaveLine(line, &reply).ok());
    ASSERT_EQ(store().GetDevice("alpha", "isdn1").secondary_lines_size(), 1);

    // Down to an analogue line: the count goes to one, line 2 is no more.
    ASSERT_TRUE(ChangeType("isdn1", 1, isdn.version(), &reply).ok());
    EXPECT_EQ(reply.version(), isdn.version() + 1);
    const auto changed = store().GetDevice("alpha", "isdn1");
    EXPECT_EQ(changed.type(), 1);
    EXPECT_EQ(changed.configured_lines(), 1);
    EXPECT_EQ(changed.secondary_lines_size(), 0);
    EXPECT_EQ(changed.version(), reply.version());

    // Repeated after a lost answer: refused as stale, not applied twice.
    auto status = ChangeType("isdn1", 1, isdn.version(), &reply);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::ABORTED);
    EXPECT_EQ(Number(status), 0x8101000Eu);
    EXPECT_EQ(Number(ChangeType("isdn1", 77, changed.version(), &reply)), 0x81010007u);
    EXPECT_EQ(Number(ChangeType("ghost", 6, 1, &reply)), 0x81010002u);

    EXPECT_EQ(Number(SaveLine(line, &reply)), 0x81010005u);
    pb::LineRequest remove;
    remove.set_host_name("alpha");
    remove.set_device("isdn1");
    remove.set_number(2);
    pb::Empty empty;
    status = client().stub->DeleteDeviceLine(client().Context().get(), remove, &empty);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::FAILED_PRECONDITION);
    EXPECT_EQ(Number(status), 0x8101000Au);
    EXPECT_EQ(store().GetDevice("alpha", "isdn1").SerializeAsString(), changed.SerializeAsString());

    // Deleted meanwhile: the device is not found and nothing is written.
    store().DeleteDevice("alpha", "isdn1");
    status = SaveLine(line, &reply);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::NOT_FOUND);
    EXPECT_EQ(Number(status), 0x81010002u);
    EXPECT_TRUE(store().GetDevice("alpha", "isdn1").is_new());
}

}  // namespace
}  // namespace veldrano::server::testing
