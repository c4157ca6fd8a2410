// The service as a console meets it: authentication and sessions, passwords,
// numbered refusals with their description and source, paging of large
// collections and runtime actions.

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <thread>

#include "service/Auth.h"
#include "service/Labels.h"
#include "tests/ServiceFixture.h"

namespace veldrano::server::testing {
namespace {

using ServiceTest = ServiceFixture;

// How often needle (in lower case) occurs in text, case-insensitively.
size_t Occurrences(std::string text, const std::string& needle) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    size_t count = 0;
    for (size_t at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1))
        ++count;
    return count;
}

TEST_F(ServiceTest, LoginAcceptsOnlyThePasswordAndEveryOtherCallNeedsALiveToken) {
    pb::Server server;
    auto get = [&] {
        return client().stub->GetServer(client().Context().get(), Key("", "alpha"), &server);
    };
    EXPECT_EQ(get().error_code(), grpc::StatusCode::UNAUTHENTICATED);

    // Each refusal says its reason once: the table's text, and no detail
    // that repeats it.
    auto detail = ServiceClient::Detail(client().Login("wrong"));
    EXPECT_EQ(detail.number(), 0x80070005u);
    EXPECT_EQ(detail.description().rfind(DescribeError(pb::ERROR_ACCESS_DENIED).description, 0), 0u)
        << detail.description();
    EXPECT_EQ(Occurrences(detail.description(), "password"), 1u) << detail.description();

    client().token = "0123456789abcdef";
    detail = ServiceClient::Detail(get());
    EXPECT_EQ(detail.number(), 0x80070005u);
    EXPECT_EQ(Occurrences(detail.description(), "session"), 1u) << detail.description();

    client().token.clear();
    ASSERT_TRUE(client().Login(kHostPassword).ok());
    ASSERT_TRUE(get().ok());
    EXPECT_EQ(server.comment(), "Server alpha");

    // A session idle for longer than the limit has ended.
    host_->GetAuth().SetIdleLimit(std::chrono::seconds(0));
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(Number(get()), 0x80070005u);
}

TEST_F(ServiceTest, APasswordChangeIsCheckedAndEndsEveryOtherSession) {
    ServiceClient other(host_->InProcessChannel());
    ASSERT_TRUE(client().Login(kHostPassword).ok());
    ASSERT_TRUE(other.Login(kHostPassword).ok());
    pb::SessionInfo info;
    auto works = [&info](ServiceClient& c) {
        return c.stub->GetSessionInfo(c.Context().get(), pb::Empty(), &info);
    };
    auto setAdmin = [this](const std::string& password) {
        pb::ChangePasswordRequest req;
        req.set_new_password(password);
        pb::Empty out;
        return client().stub->SetAdminPassword(client().Context().get(), req, &out);
    };

    // Seven characters (one of them two bytes long) are too few; nothing changes.
    EXPECT_EQ(Number(setAdmin("sev\xc3\xa9nch")), 0x81010010u);
    EXPECT_TRUE(works(other).ok());

    const std::string changed = "eight ch";
    ASSERT_TRUE(setAdmin(changed).ok());
    EXPECT_TRUE(works(client()).ok()) << "the changing console keeps its session";
    EXPECT_EQ(Number(works(other)), 0x80070005u);
    EXPECT_EQ(Number(other.Login(kHostPassword)), 0x80070005u);
    EXPECT_TRUE(ServiceClient(host_->InProcessChannel()).Login(changed).ok());
}

TEST_F(ServiceTest, PasswordsAreStoredOnlyAsArgon2idHashesAndLeaveTheVersion) {
    ASSERT_TRUE(client().Login(kHostPassword).ok());
    const int64_t version = store().GetUser("alpha", "alice").version();
    auto setUser = [this](const std::string& password) {
        pb::Empty out;
        return client().stub->SetUserPassword(
            client().Context().get(),
            With(pb::SetUserPasswordRequest(),
                 "host_name: 'alpha' name: 'alice' new_password: '" + password + "'"),
            &out);
    };
    EXPECT_EQ(Number(setUser("1234567")), 0x81010010u);
    EXPECT_FALSE(store().GetUser("alpha", "alice").password_set());
    const std::string secret = "correct horse";
    ASSERT_TRUE(setUser(secret).ok());
    EXPECT_TRUE(store().GetUser("alpha", "alice").password_set());
    ASSERT_TRUE(setUser("").ok());
    EXPECT_FALSE(store().GetUser("alpha", "alice").password_set());
    // An editor open on the user may still save its other edits.
    EXPECT_EQ(store().GetUser("alpha", "alice").version(), version);

    // Neither the store nor its journal holds the password as typed.
    for (const char* suffix : {"", "-wal"}) {
        std::ifstream file(dir_.File(std::string("store.db") + suffix), std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(file)), {});
        EXPECT_EQ(bytes.find(secret), std::string::npos) << suffix;
    }
    // Stored as a strong Argon2id hash: m is in KiB, at least 19 MiB; t at
    // least two passes.
    const std::string hash = store().GetMeta("admin_password_hash");
    EXPECT_EQ(hash.rfind("$argon2id$", 0), 0u) << hash;
    EXPECT_NE(hash.find("m=19456,t=2"), std::string::npos) << hash;
}

TEST_F(ServiceTest, RefusalsCarryTheirNumberDescriptionAndSource) {
    ASSERT_TRUE(client().Login(kHostPassword).ok());
    pb::User user = With(store().GetUser("alpha", "alice"), "comment: ''");
    pb::CommitReply reply;
    auto detail =
        ServiceClient::Detail(client().stub->CommitUser(client().Context().get(), user, &reply));
    EXPECT_EQ(detail.number(), 0x81010006u);
    EXPECT_NE(detail.description().find("alice"), std::string::npos) << detail.description();
    EXPECT_EQ(detail.source(), "Kelvar.Administrator");

    user.set_comment("Changed");
    user.set_version(user.version() + 5);
    auto status = client().stub->CommitUser(client().Context().get(), user, &reply);
    detail = ServiceClient::Detail(status);
    // A conflict is no transient failure: outside the 0x8100 family, for
    // which the console offers Retry.
    EXPECT_EQ(detail.number(), 0x8101000Eu);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::ABORTED);
    // Said once: the table's text and nothing after it.
    EXPECT_EQ(detail.description(), DescribeError(pb::ERROR_VERSION_CONFLICT).description);
}

TEST_F(ServiceTest, CommitServerDeletesTheConfirmedRolesObjectsInTheSameRequest) {
    ASSERT_TRUE(client().Login(kHostPassword).ok());
    auto request = With(pb::CommitServerRequest(), "delete_objects { devices: true }");
    *request.mutable_server() =
        With(store().GetServer("alpha"), "user_server: false device_server: false");
    pb::CommitReply reply;

    // The users were not confirmed: refused, named, nothing written.
    auto status = client().stub->CommitServer(client().Context().get(), request, &reply);
    EXPECT_EQ(status.error_code(), grpc::StatusCode::FAILED_PRECONDITION);
    EXPECT_EQ(ServiceClient::Detail(status).description(),
              DescribeError(pb::ERROR_ROLE_OBJECTS_REMAIN).description +
                  std::string(": server 'alpha': 1 user"));
    EXPECT_EQ(store().ListDevices("alpha").size(), 3u);

    request.mutable_delete_objects()->set_users(true);
    status = client().stub->CommitServer(client().Context().get(), request, &reply);
    ASSERT_TRUE(status.ok()) << status.error_message();
    EXPECT_TRUE(store().ListUsers("alpha").empty());
    EXPECT_TRUE(store().ListDevices("alpha").empty());
}

TEST_F(ServiceTest, LargeCollectionsArriveWholeInPagesBelowOneMebibyte) {
    store().Bulk([&] {
        for (int i = 0; i < 3000; ++i) {
            auto u = store().GetUser("alpha", "u" + std::to_string(i));
            u.set_comment(std::string(30, 'c'));
            u.set_headlines(std::string(80, 'h'));
            for (int x = 0; x < 5; ++x) {
                auto* extra = u.add_extras();
                extra->set_name("extra" + std::to_string(x));
                extra->set_value(std::string(80, 'v'));
            }
            store().CommitUser(u);
        }
    });
    ASSERT_TRUE(client().Login(kHostPassword).ok());
    pb::ListRequest req;
    req.set_host_name("alpha");
    auto context = client().Context();
    auto reader = client().stub->ListUsers(context.get(), req);
    pb::UserPage page;
    int pages = 0, users = 0;
    while (reader->Read(&page)) {
        ++pages;
        users += page.users_size();
        EXPECT_LT(page.ByteSizeLong(), 1024u * 1024u);
    }
    ASSERT_TRUE(reader->Finish().ok());
    EXPECT_EQ(users, 3001);  // and alice
    EXPECT_GT(pages, 1);
}

TEST_F(ServiceTest, RuntimeActionsChangeStateAndLogEventsThatAViewerFetchesSince) {
    ASSERT_TRUE(client().Login(kHostPassword).ok());
    grpc::Status status;
    auto events = [&](int64_t newerThan, int maxCount) {
        auto ask = With(pb::EventRequest(), "host_name: 'alpha'");
        ask.set_newer_than(newerThan);
        ask.set_max_count(maxCount);
        auto context = client().Context();
        auto reader = client().stub->ListEvents(context.get(), ask);
        std::vector<int64_t> ids;
        for (pb::EventPage page; reader->Read(&page);)
            for (const pb::Event& e : page.events()) ids.push_back(e.id());
        status = reader->Finish();
        return ids;
    };
    const auto stop = With(pb::ProcessRequest(), "host_name: 'alpha' slot: 2");
    pb::Empty empty;
    ASSERT_TRUE(client().stub->StopProcess(client().Context().get(), stop, &empty).ok());
    EXPECT_EQ(store().ListProcesses("alpha").at(2).pid(), 0);

    // What a viewer holding the log up to the stop's event asks next: nothing
    // until more is logged; a negative id or count is refused.
    const std::vector<int64_t> held = events(0, 0);
    ASSERT_EQ(held.size(), 1u);
    EXPECT_TRUE(events(held[0], 0).empty());
    for (auto [newerThan, maxCount] : {std::pair{int64_t(-1), 0}, std::pair{int64_t(0), -1}}) {
        events(newerThan, maxCount);
        EXPECT_EQ(Number(status), 0x81010005u);
    }
}

}  // namespace
}  // namespace veldrano::server::testing
