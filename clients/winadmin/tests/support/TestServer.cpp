#include "support/TestServer.h"

#include <sqlite3.h>

#include <stdexcept>

#include "service/ServerHost.h"
#include "store/Store.h"

namespace winadmin {

const QString TestServer::Password = QStringLiteral("Quill-7-Harbour");

TestServer::TestServer() : TestServer(Options{}) {}

TestServer::TestServer(Options options) : options_(std::move(options)) {
    if (!dir_.isValid())
        throw std::runtime_error("cannot create a temporary directory for the store");
    Start(options_.tls ? "0.0.0.0:0" : options_.tcp ? "127.0.0.1:0" : "", Password);
    port_ = host_->Port();
}

TestServer::~TestServer() = default;

void TestServer::Start(const std::string& listen, const QString& password) {
    veldrano::server::ServerOptions options;
    options.dataPath = dir_.filePath(QStringLiteral("store.db")).toStdString();
    options.listen = listen;
    options.brand = options_.brand;
    options.language = options_.language;
    options.password = password.toStdString();
    options.certificateFile = options_.certificateFile;
    options.keyFile = options_.keyFile;
    // Tests need a server that changes only when they change it.
    options.simulate = false;
    host_ = std::make_unique<veldrano::server::ServerHost>(options);
}

veldrano::server::Store& TestServer::GetStore() {
    return host_->GetStore();
}

std::shared_ptr<grpc::Channel> TestServer::Channel() {
    return host_->InProcessChannel();
}

QString TestServer::TcpHost() const {
    return port_ ? QStringLiteral("127.0.0.1:%1").arg(port_) : QString();
}

std::unique_ptr<GrpcServerSession> TestServer::Login() {
    auto session = std::make_unique<GrpcServerSession>(Channel());
    session->SetPassword(Password);
    session->Login();
    return session;
}

std::unique_ptr<GrpcServerSession> TestServer::LoginTcp() {
    auto session = std::make_unique<GrpcServerSession>();
    session->SetHostName(TcpHost());
    session->SetPassword(Password);
    session->Login();
    return session;
}

void TestServer::Shutdown() {
    if (host_) host_->Shutdown();
}

void TestServer::Restart(const QString& password) {
    host_.reset();
    const std::string host = options_.tls ? "0.0.0.0:" : "127.0.0.1:";
    Start(port_ ? host + std::to_string(port_) : "", password);
}

void TestServer::AddUserServer(const QString& name) {
    veldrano::admin::v1::Server server = GetStore().GetServer(name.toStdString());
    server.set_comment("test server");
    server.set_user_server(true);
    server.set_printer_server(true);
    server.set_device_server(true);
    GetStore().CommitServer(server);
}

void TestServer::RunSqlBehindTheServer(const char* sql) {
    sqlite3* db = nullptr;
    const std::string path = dir_.filePath(QStringLiteral("store.db")).toStdString();
    int rc = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
    if (rc == SQLITE_OK) rc = sqlite3_busy_timeout(db, 5000);
    if (rc == SQLITE_OK) rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    const std::string error = rc == SQLITE_OK ? std::string() : sqlite3_errmsg(db);
    sqlite3_close(db);
    if (!error.empty()) throw std::runtime_error("store SQL failed: " + error);
}

}  // namespace winadmin
