// The lists' projection (ListRequest.columns_only): every record of a list
// carries exactly the fields that its kind's list shows, with the values of
// the whole record, and nothing else; without it the records stay whole.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/ServiceFixture.h"

namespace veldrano::server::testing {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using FieldNames = std::set<std::string>;

template <class Page>
using ListCall = std::unique_ptr<grpc::ClientReader<Page>> (pb::Administration::Stub::*)(
    grpc::ClientContext*, const pb::ListRequest&);

// Clears every field of m but those named in keep ("primary.comment" keeps
// one field of a nested record).
void KeepOnly(Message& m, const FieldNames& keep, const std::string& prefix = "") {
    const auto* reflection = m.GetReflection();
    std::vector<const FieldDescriptor*> fields;
    reflection->ListFields(m, &fields);
    for (const FieldDescriptor* field : fields) {
        const std::string name = prefix + field->name();
        if (keep.count(name)) continue;
        const auto inside = keep.lower_bound(name + ".");
        if (inside != keep.end() && inside->rfind(name + ".", 0) == 0 && !field->is_repeated())
            KeepOnly(*reflection->MutableMessage(&m, field), keep, name + ".");
        else
            reflection->ClearField(&m, field);
    }
}

class ListProjectionTest : public ServiceFixture {
protected:
    ListProjectionTest() { EXPECT_TRUE(client().Login(kHostPassword).ok()); }

    // Every record of a list, pages joined.
    template <class Page, class Record>
    std::vector<Record> Read(ListCall<Page> call,
                             const google::protobuf::RepeatedPtrField<Record>& (Page::*items)()
                                 const,
                             const std::string& host, bool columnsOnly) {
        pb::ListRequest request;
        request.set_host_name(host);
        request.set_columns_only(columnsOnly);
        auto context = client().Context();
        auto reader = (client().stub.get()->*call)(context.get(), request);
        std::vector<Record> records;
        Page page;
        while (reader->Read(&page))
            for (const Record& record : (page.*items)()) records.push_back(record);
        EXPECT_TRUE(reader->Finish().ok());
        return records;
    }

    // The projection is the whole list with every other field cleared: the
    // same records in the same order, field for field.
    template <class Page, class Record>
    void ExpectProjection(ListCall<Page> call,
                          const google::protobuf::RepeatedPtrField<Record>& (Page::*items)() const,
                          const std::string& host, const FieldNames& columns) {
        const std::vector<Record> whole = Read(call, items, host, false);
        const std::vector<Record> listed = Read(call, items, host, true);
        ASSERT_FALSE(whole.empty());
        ASSERT_EQ(listed.size(), whole.size());
        for (size_t i = 0; i < whole.size(); ++i) {
            Record expected = whole[i];
            KeepOnly(expected, columns);
            EXPECT_EQ(listed[i].DebugString(), expected.DebugString()) << "record " << i;
            // The whole record has more: the projection really left it out.
            EXPECT_NE(listed[i].ByteSizeLong(), whole[i].ByteSizeLong()) << "record " << i;
        }
    }
};

TEST_F(ListProjectionTest, EachListCarriesExactlyWhatItShows) {
    // A user with every kind of field, some after the comment in the stored
    // body, and texts beyond ASCII.
    auto user = store().GetUser("alpha", "émile");
    user.set_comment("Zoë's désk ☎");
    user.set_headlines("Head");
    user.set_priority(7);
    user.set_keep_copy(true);
    user.mutable_substitute()->set_user_name("alice");
    user.mutable_substitute()->set_host_name("alpha");
    user.set_mail_address("emile@example.org");
    user.set_background_paper(3, 12);
    store().CommitUser(user);

    auto route = store().GetRoute("in1");
    route.set_comment("Inbound");
    route.set_match_extension("200");
    route.set_match_tsi("+49");
    route.mutable_user()->set_user_name("alice");
    route.mutable_user()->set_host_name("alpha");
    route.set_group("Sales");
    route.set_poll_server("alpha");
    store().CommitRoute(route);
    ConfigureSecondLine(store());

    using Stub = pb::Administration::Stub;
    ExpectProjection(&Stub::ListUsers, &pb::UserPage::users, "alpha", {"name", "comment"});
    ExpectProjection(&Stub::ListPrinters, &pb::PrinterPage::printers, "alpha",
                     {"name", "comment", "type"});
    ExpectProjection(&Stub::ListDevices, &pb::DevicePage::devices, "alpha",
                     {"name", "type", "primary.comment"});
    ExpectProjection(&Stub::ListGroups, &pb::GroupPage::groups, "", {"name", "comment"});
    ExpectProjection(&Stub::ListRoutes, &pb::RoutePage::routes, "",
                     {"name", "comment", "match_extension", "match_tsi"});

    // The whole list still carries what the editors need.
    const auto whole = Read(&Stub::ListUsers, &pb::UserPage::users, "alpha", false);
    ASSERT_EQ(whole.size(), 2u);
    EXPECT_EQ(whole[1].name(), "émile");
    EXPECT_EQ(whole[1].mail_address(), "emile@example.org");
    EXPECT_EQ(whole[0].extras_size(), 1);
}

TEST_F(ListProjectionTest, AProjectedListOfAMissingServerIsRefusedLikeTheWholeOne) {
    pb::ListRequest request;
    request.set_host_name("nosuch");
    request.set_columns_only(true);
    auto context = client().Context();
    auto reader = client().stub->ListUsers(context.get(), request);
    pb::UserPage page;
    while (reader->Read(&page)) {
    }
    const grpc::Status status = reader->Finish();
    ASSERT_FALSE(status.ok());
    EXPECT_EQ(ServiceClient::Detail(status).number(), 0x81010002u);
}

}  // namespace
}  // namespace veldrano::server::testing
