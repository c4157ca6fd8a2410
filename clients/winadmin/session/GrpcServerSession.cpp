#include "session/GrpcServerSession.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "common/FieldHelpers.h"
#include "common/Prompter.h"
#include "session/SecureChannel.h"

namespace winadmin {

namespace {

constexpr char TokenHeader[] = "veldrano-token";
// How long a call may wait before the pointer says so: quicker answers
// would only make it flicker.
constexpr int kWaitPointerMs = 500;
// How long a call blocks before the event loop goes on meanwhile: too short
// for anyone to see the window stand still.
constexpr int kQuietWaitMs = 30;
// Of which the first part yields instead of sleeping (see Await).
constexpr int kSpinMs = 2;

std::string Utf8(const QString& text) {
    return text.toStdString();
}

bool ValidPort(const QString& text) {
    bool ok = false;
    const int port = text.toInt(&ok);
    return ok && port > 0 && port <= 65535 && !text.startsWith(QLatin1Char('+'));
}

}  // namespace

GrpcServerSession::GrpcServerSession() {
    worker_.setMaxThreadCount(1);
}

GrpcServerSession::GrpcServerSession(std::shared_ptr<grpc::Channel> channel)
    : fixedChannel_(std::move(channel)) {
    worker_.setMaxThreadCount(1);
}

GrpcServerSession::~GrpcServerSession() = default;

std::string GrpcServerSession::ChannelTarget(const QString& host) {
    const QString text = host.trimmed();
    const QString defaultPort = QString::number(DefaultPort);
    if (text.isEmpty()) return {};

    if (text.startsWith(QLatin1Char('['))) {
        const qsizetype close = text.indexOf(QLatin1Char(']'));
        if (close < 2) return {};
        const QString address = text.mid(1, close - 1);
        const QString rest = text.mid(close + 1);
        if (rest.isEmpty()) return Utf8(QStringLiteral("[%1]:%2").arg(address, defaultPort));
        if (!rest.startsWith(QLatin1Char(':')) || !ValidPort(rest.mid(1))) return {};
        return Utf8(QStringLiteral("[%1]:%2").arg(address, rest.mid(1)));
    }

    // More than one colon without brackets can only be an IPv6 literal, and
    // then no port can be told apart from the address.
    if (text.count(QLatin1Char(':')) > 1)
        return Utf8(QStringLiteral("[%1]:%2").arg(text, defaultPort));

    static const QRegularExpression hostPattern(QStringLiteral("^[A-Za-z0-9._-]+$"));
    const qsizetype colon = text.indexOf(QLatin1Char(':'));
    const QString name = colon < 0 ? text : text.left(colon);
    const QString port = colon < 0 ? defaultPort : text.mid(colon + 1);
    if (!hostPattern.match(name).hasMatch() || !ValidPort(port)) return {};
    return Utf8(name + QLatin1Char(':') + port);
}

void GrpcServerSession::SetHostName(const QString& host) {
    hostText_ = host;
    reportedHost_.clear();
}

QString GrpcServerSession::GetHostName() const {
    return reportedHost_.isEmpty() ? hostText_ : reportedHost_;
}

void GrpcServerSession::SetPassword(const QString& password) {
    password_ = password;
}

void GrpcServerSession::SetTimeout(int seconds) {
    // Every call must carry a deadline; a zero or negative time-out would
    // mean none, so the shortest one is a second.
    timeoutSeconds_ = std::max(1, seconds);
    timeoutChosen_ = true;
}

QString GrpcServerSession::GetBrand() const {
    return QString::fromStdString(info_.brand());
}

QString GrpcServerSession::GetLabel(const QString& key) const {
    const auto found = labels_.constFind(key);
    return found == labels_.cend() ? key : found.value();
}

grpc::ChannelArguments GrpcServerSession::ChannelArguments() {
    grpc::ChannelArguments arguments;
    // gRPC waits ever longer between attempts to reach a server that went
    // away (seconds after a restart of a minute); an administrator who
    // presses Retry once the server is back must not wait for that.
    arguments.SetInt(GRPC_ARG_INITIAL_RECONNECT_BACKOFF_MS, kReconnectFirstMs);
    arguments.SetInt(GRPC_ARG_MAX_RECONNECT_BACKOFF_MS, kReconnectLongestMs);
    // Channels of one process share their connections by default, waiting
    // state included: a channel made new to cut the wait would inherit it.
    arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
    return arguments;
}

bool GrpcServerSession::ChannelFailed() const {
    return channel_ && !fixedChannel_ &&
           channel_->GetState(false) == GRPC_CHANNEL_TRANSIENT_FAILURE;
}

void GrpcServerSession::EnsureChannel() {
    if (fixedChannel_) {
        if (!stub_) {
            channel_ = fixedChannel_;
            stub_ = veldrano::admin::v1::Administration::NewStub(channel_);
        }
        return;
    }
    const std::string target = ChannelTarget(hostText_);
    if (target.empty())
        throw SessionError::FromCode(veldrano::admin::v1::ERROR_HOST_UNREACHABLE, hostText_);
    if (target == channelTarget_ && stub_ && !ChannelFailed()) return;
    // A host that takes the connection and then says nothing must not
    // freeze the window for the whole time-out: the probe waits as calls do.
    const auto wait = [this](const std::function<void()>& work) {
        grpc::ClientContext unused;
        Await(
            [&](grpc::ClientContext&) {
                work();
                return grpc::Status::OK;
            },
            unused);
    };
    channel_ = OpenTrustedChannel(target, ChannelArguments(), timeoutSeconds_, wait);
    channelTarget_ = target;
    stub_ = veldrano::admin::v1::Administration::NewStub(channel_);
}

void GrpcServerSession::PrepareContext(grpc::ClientContext& context, bool withToken) const {
    context.set_deadline(std::chrono::system_clock::now() + std::chrono::seconds(timeoutSeconds_));
    if (withToken && !token_.empty()) context.AddMetadata(TokenHeader, token_);
}

veldrano::admin::v1::LoginReply GrpcServerSession::CallLogin(bool atLogin) {
    veldrano::admin::v1::LoginRequest request;
    request.set_password(Utf8(password_));
    request.set_host_name(Utf8(hostText_));
    veldrano::admin::v1::LoginReply reply;
    grpc::ClientContext context;
    PrepareContext(context, false);
    ++rpcCount_;
    const grpc::Status status = Await(
        [&](grpc::ClientContext& call) { return stub_->Login(&call, request, &reply); }, context);
    if (!status.ok()) throw MapStatus(status, atLogin, GetHostName());
    return reply;
}

void GrpcServerSession::Login() {
    loggedIn_ = false;
    token_.clear();
    reportedHost_.clear();
    EnsureChannel();

    const veldrano::admin::v1::LoginReply reply = CallLogin(true);
    token_ = reply.token();

    info_ = Unary<veldrano::admin::v1::SessionInfo>([&](auto& context, auto* queue) {
        return stub_->PrepareAsyncGetSessionInfo(&context, veldrano::admin::v1::Empty(), queue);
    });
    if (!timeoutChosen_ && info_.default_timeout_seconds() > 0)
        timeoutSeconds_ = info_.default_timeout_seconds();

    // A new login may reach another server or language, so nothing of an
    // earlier table is kept.
    labelStamp_.clear();
    LoadLabels({});
    deviceTypes_.clear();

    reportedHost_ = QString::fromStdString(reply.host_name());
    loggedIn_ = true;
}

void GrpcServerSession::LoadLabels(const std::string& knownStamp) {
    veldrano::admin::v1::LabelsRequest request;
    request.set_known_stamp(knownStamp);
    const auto table = Unary<veldrano::admin::v1::LabelTable>([&](auto& context, auto* queue) {
        return stub_->PrepareAsyncGetLabels(&context, request, queue);
    });
    if (table.unchanged() && !knownStamp.empty()) return;
    QHash<QString, QString> labels;
    labels.reserve(table.labels_size());
    for (const auto& label : table.labels())
        labels.insert(QString::fromStdString(label.key()), QString::fromStdString(label.text()));
    labels_ = std::move(labels);
    labelStamp_ = table.stamp();
}

void GrpcServerSession::ReloadLabels() {
    LoadLabels(labelStamp_);
}

void GrpcServerSession::SetAdminPassword(const QString& password) {
    veldrano::admin::v1::ChangePasswordRequest request;
    request.set_new_password(Utf8(password));
    Unary<veldrano::admin::v1::Empty>([&](auto& context, auto* queue) {
        return stub_->PrepareAsyncSetAdminPassword(&context, request, queue);
    });
    // A later automatic re-login must use the password that is now valid.
    password_ = password;
}

void GrpcServerSession::Run(const CallBody& body, Waiting waiting) {
    // Without a login the call still goes to a given channel: the server is
    // the one that refuses it, as it would refuse any caller without a token.
    if (!stub_ && fixedChannel_) EnsureChannel();
    if (!stub_)
        throw SessionError::FromCode(veldrano::admin::v1::ERROR_ACCESS_DENIED,
                                     QStringLiteral("not logged in"));
    // A channel that failed to reach the server waits out its back-off
    // before it tries again and fails every call meanwhile; a new one tries
    // at once, so a call after the server is back goes through. Not while
    // another call waits: that one still uses the channel.
    if (!callInProgress_ && ChannelFailed()) EnsureChannel();
    const uint32_t accessDenied = ErrorNumber(veldrano::admin::v1::ERROR_ACCESS_DENIED);
    for (bool retried = false;; retried = true) {
        grpc::ClientContext context;
        PrepareContext(context, true);
        ++rpcCount_;
        const grpc::Status status =
            waiting == Waiting::InQueue ? body(context) : Await(body, context);
        if (status.ok()) return;
        SessionError error = MapStatus(status, false, GetHostName());
        // A token ends when the server restarts or the session sat idle too
        // long; the administrator should not have to log in again for that.
        if (retried || !loggedIn_ || error.Number() != accessDenied) throw error;
        token_ = LogInAgain(error);
    }
}

grpc::Status GrpcServerSession::Await(const CallBody& body, grpc::ClientContext& context) {
    // Without an event loop of this thread to keep going, and for a call
    // that a timer makes while another one waits, the call simply blocks.
    const QCoreApplication* application = QCoreApplication::instance();
    if (!application || QThread::currentThread() != application->thread() || callInProgress_)
        return body(context);

    // A server that hangs must not make the console look hung: the windows
    // keep painting, timers run, and only the administrator's input waits
    // for the answer. The deadline in the context still ends the call.
    callInProgress_ = true;
    grpc::Status status;
    QEventLoop loop;
    std::mutex mutex;
    std::condition_variable finished;
    std::atomic<bool> done = false;
    worker_.start([&] {
        grpc::Status answer = body(context);
        {
            const std::lock_guard<std::mutex> lock(mutex);
            status = std::move(answer);
            done = true;
        }
        finished.notify_one();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    // Most calls answer at once; for them the loop would only cost time and
    // let timers in where nothing needs them. The first moments are spent
    // yielding rather than asleep: on a busy machine, waking a sleeping
    // thread takes longer than a small call (a spin without yielding would
    // take the processor from the worker and the server alike).
    const auto spinUntil = std::chrono::steady_clock::now() + std::chrono::milliseconds(kSpinMs);
    while (!done && std::chrono::steady_clock::now() < spinUntil) std::this_thread::yield();
    bool answered = done;
    if (!answered) {
        std::unique_lock<std::mutex> lock(mutex);
        answered = finished.wait_for(lock, std::chrono::milliseconds(kQuietWaitMs - kSpinMs),
                                     [&] { return done.load(); });
    }
    if (!answered) WaitInLoop(loop);
    // The loop also ends when the application quits; the call's locals must
    // outlive the worker all the same.
    worker_.waitForDone();
    callInProgress_ = false;
    return status;
}

void GrpcServerSession::AwaitAnswer(grpc::CompletionQueue& queue) {
    void* tag = nullptr;
    bool ok = false;
    const QCoreApplication* application = QCoreApplication::instance();
    const bool loopMayRun =
        application && QThread::currentThread() == application->thread() && !callInProgress_;
    const auto quietUntil =
        std::chrono::system_clock::now() + std::chrono::milliseconds(kQuietWaitMs);
    if (!loopMayRun) {
        queue.Next(&tag, &ok);
    } else if (queue.AsyncNext(&tag, &ok, quietUntil) != grpc::CompletionQueue::GOT_EVENT) {
        callInProgress_ = true;
        QEventLoop loop;
        worker_.start([&] {
            queue.Next(&tag, &ok);
            QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
        });
        WaitInLoop(loop);
        worker_.waitForDone();
        callInProgress_ = false;
    }
    // A queue must be shut down and emptied before it goes.
    queue.Shutdown();
    while (queue.Next(&tag, &ok)) {
    }
}

void GrpcServerSession::WaitInLoop(QEventLoop& loop) {
    std::optional<BusyPointer> pointer;
    QTimer::singleShot(kWaitPointerMs - kQuietWaitMs, &loop, [&] {
        if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) &&
            !QGuiApplication::overrideCursor())
            pointer.emplace();
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

std::string GrpcServerSession::LogInAgain(const SessionError& refused) {
    const uint32_t accessDenied = ErrorNumber(veldrano::admin::v1::ERROR_ACCESS_DENIED);
    for (;;) {
        try {
            return CallLogin(false).token();
        } catch (const SessionError& error) {
            // The password this session holds no longer opens the server:
            // it was changed meanwhile. The administrator may give the
            // current one; a cancel reports the refusal as it came.
            if (error.Number() != accessDenied) throw;
            const std::optional<QString> password = ThePrompter().AskPassword(
                GetLabel(QStringLiteral("Login")), GetLabel(QStringLiteral("LoginAgain")));
            if (!password) throw refused;
            password_ = *password;
        }
    }
}

SessionError GrpcServerSession::MapStatus(const grpc::Status& status, bool atLogin,
                                          const QString& host) {
    namespace pb = veldrano::admin::v1;
    pb::ErrorDetail detail;
    if (!status.error_details().empty() && detail.ParseFromString(status.error_details()) &&
        detail.number() != 0) {
        return SessionError(detail.number(), QString::fromStdString(detail.description()),
                            QString::fromStdString(detail.source()));
    }

    const QString message = QString::fromStdString(status.error_message());
    switch (status.error_code()) {
        case grpc::StatusCode::UNAUTHENTICATED:
        case grpc::StatusCode::PERMISSION_DENIED:
            return SessionError::FromCode(pb::ERROR_ACCESS_DENIED);
        case grpc::StatusCode::DEADLINE_EXCEEDED:
            return SessionError::FromCode(pb::ERROR_TIMEOUT);
        case grpc::StatusCode::UNAVAILABLE:
            if (atLogin) return SessionError::FromCode(pb::ERROR_HOST_UNREACHABLE, host);
            return SessionError::FromCode(pb::ERROR_SERVER_BUSY);
        case grpc::StatusCode::CANCELLED:
            // The console cancels none of its calls: this one was cut by the
            // server going down, and repeating it once the server is back
            // is what cures it.
            return SessionError::FromCode(pb::ERROR_SERVER_BUSY);
        case grpc::StatusCode::RESOURCE_EXHAUSTED:
            // gRPC's size limit on one message; the same request or answer
            // would be refused again however often it is repeated.
            if (message.contains(QLatin1String("larger than max")))
                return SessionError::FromCode(pb::ERROR_MESSAGE_TOO_LARGE);
            return SessionError::FromCode(pb::ERROR_SERVER_BUSY, message);
        default:
            return SessionError::FromCode(pb::ERROR_PROTOCOL, message);
    }
}

}  // namespace winadmin
