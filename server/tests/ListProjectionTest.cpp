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
    store().CommitUser(With(store().GetUser("alpha", "émile"),
                            "comment: 'Zoë\\'s désk ☎' headlines: 'Head' priority: 7 keep_copy: "
                            "true substitute { user_name: 'alice' host_name: 'alpha' } "
                            "mail_address: 'emile@example.org'"));
    ConfigureSecondLine(store());

    using Stub = pb::Administration::Stub;
    ExpectProjection(&Stub::ListUsers, &pb::UserPage::users, "alpha", {"name", "comment"});
    ExpectProjection(&Stub::ListDevices, &pb::DevicePage::devices, "alpha",
                     {"name", "type", "primary.comment"});
}

}  // namespace
}  // namespace veldrano::server::testing
