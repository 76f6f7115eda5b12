#include "conference/broker/broker_link.h"

#include "conference/broker/shared_key.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <random>

namespace {

using std::chrono::milliseconds;

constexpr int KEEP_ALIVE_S = 5;   // the shortest the library takes
constexpr uint32_t EXPIRY_S = 30; // of a record whose writer and its end were both missed
constexpr milliseconds CONNECT_BOUND {5000};
constexpr milliseconds NAME_BOUND {15000};
constexpr milliseconds CLOSE_BOUND {1000};
constexpr milliseconds UPKEEP {1000}; // between two calls for the library's own timers
constexpr milliseconds FIRST_PAUSE {250};
constexpr milliseconds LONGEST_PAUSE {2000};
constexpr int READS_A_PASS = 64;
constexpr int RECORD_QOS = 1;

QD_Clock::Time now_is() { return QD_Clock::real().now(); }

/// Agents that have lost their broker together do not come back together.
milliseconds spread(milliseconds pause)
{
    static thread_local std::minstd_rand random {std::random_device {}()};
    return pause / 2 + milliseconds(random() % static_cast<uint32_t>(pause.count()));
}

struct Library {
    Library()
    {
        mosquitto_lib_init();
        ::signal(SIGPIPE, SIG_IGN); // what writing to a broken TLS connection raises
    }
    ~Library() { mosquitto_lib_cleanup(); }
};

}

/// The library's callbacks, from within its loop functions.
struct QD_Broker_Link::Callbacks {
    static QD_Broker_Link& link(void* object) { return *static_cast<QD_Broker_Link*>(object); }

    static void connected(mosquitto*, void* object, int reason, int, const mosquitto_property*)
    {
        link(object).connected(reason);
    }
    static void subscribed(
        mosquitto*, void* object, int, int count, const int* granted, const mosquitto_property*)
    {
        link(object).subscribed(count, granted);
    }
    static void published(mosquitto*, void* object, int, int reason, const mosquitto_property*)
    {
        link(object).published(reason);
    }
    static void message(
        mosquitto*, void* object, const mosquitto_message* message, const mosquitto_property*)
    {
        QD_Broker_Link& self = link(object);
        const std::string_view topic = message->topic;
        if (self.state_ == UP && topic.starts_with(self.prefix_))
            self.inbox_.emplace_back(topic.substr(self.prefix_.size()),
                std::string(static_cast<const char*>(message->payload),
                    static_cast<size_t>(message->payloadlen)));
    }
    static void log(mosquitto*, void* object, int level, const char* text)
    {
        if (level == MOSQ_LOG_ERR)
            link(object).log_ += text;
    }
};

void QD_Broker_Link::Release::operator()(mosquitto* handle) const { mosquitto_destroy(handle); }

QD_Broker_Link::QD_Broker_Link(QD_Broker_Url url, std::string owner, QD_Broker_Events& events) :
    url_(std::move(url)),
    prefix_(url_.topic()),
    owner_(std::move(owner)),
    events_(events),
    pause_(FIRST_PAUSE)
{
    static const Library library;
}

QD_Broker_Link::~QD_Broker_Link() = default;

void QD_Broker_Link::open()
{
    state_ = WAITING;
    deadline_ = now_is();
}

int QD_Broker_Link::prepare_security()
{
    if (url_.scheme == QD_Broker_Url::SHARED_KEY)
        return prepare_shared_key();
    if (!url_.user.empty()) {
        const int error = mosquitto_username_pw_set(handle_.get(), url_.user.c_str(),
            url_.password.empty() ? nullptr : url_.password.c_str());
        if (error != MOSQ_ERR_SUCCESS)
            return error;
    }
    if (url_.scheme == QD_Broker_Url::PLAIN)
        return MOSQ_ERR_SUCCESS;
    if (url_.ca_file.empty())
        return mosquitto_int_option(handle_.get(), MOSQ_OPT_TLS_USE_OS_CERTS, 1);
    return mosquitto_tls_set(
        handle_.get(), url_.ca_file.c_str(), nullptr, nullptr, nullptr, nullptr);
}

/// The library's own way with a key also takes a server that has only a certificate, any one.
int QD_Broker_Link::prepare_shared_key()
{
    const auto tls = qd_shared_key_tls(url_); // the handle holds it from here on
    if (tls == nullptr)
        return MOSQ_ERR_TLS;
    const int error = mosquitto_int_option(handle_.get(), MOSQ_OPT_SSL_CTX_WITH_DEFAULTS, 0);
    return error != MOSQ_ERR_SUCCESS
        ? error
        : mosquitto_void_option(handle_.get(), MOSQ_OPT_SSL_CTX, tls.get());
}

/// A new handle for every connection: nothing of the former one is sent again.
int QD_Broker_Link::prepare()
{
    // The name is ours for all connections, so that a new one ends the former at the broker.
    const std::string id = "quendal-" + owner_.substr(owner_.find('/') + 1);
    handle_.reset(mosquitto_new(id.c_str(), true, this));
    if (!handle_)
        return MOSQ_ERR_NOMEM;
    mosquitto* const handle = handle_.get();
    mosquitto_int_option(handle, MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5);
    mosquitto_int_option(handle, MOSQ_OPT_TCP_NODELAY, 1);
    mosquitto_connect_v5_callback_set(handle, Callbacks::connected);
    mosquitto_subscribe_v5_callback_set(handle, Callbacks::subscribed);
    mosquitto_publish_v5_callback_set(handle, Callbacks::published);
    mosquitto_message_v5_callback_set(handle, Callbacks::message);
    mosquitto_log_callback_set(handle, Callbacks::log);
    if (const int error = prepare_security(); error != MOSQ_ERR_SUCCESS)
        return error;

    // Only the call that waits takes properties for the connection, which stay
    // for the one that does not; port -1 makes it take them and go no further.
    mosquitto_property* limit = nullptr;
    mosquitto_property_add_int32(&limit, MQTT_PROP_MAXIMUM_PACKET_SIZE, MAX_MESSAGE);
    mosquitto_connect_bind_v5(handle, url_.host.c_str(), -1, KEEP_ALIVE_S, nullptr, limit);
    mosquitto_property_free_all(&limit);
    return mosquitto_will_set_v5(
        handle, (prefix_ + owner_).c_str(), 0, nullptr, RECORD_QOS, true, nullptr);
}

/// The library waits for the name servers, so they are asked before; the answer
/// is at hand when it asks them again.
void QD_Broker_Link::name(QD_Clock::Time now)
{
    state_ = NAMING;
    deadline_ = now + NAME_BOUND;
    lookup_.start(url_.host);
    if (lookup_.answer() != QD_Host_Lookup::PENDING)
        named(now);
}

void QD_Broker_Link::named(QD_Clock::Time now)
{
    if (lookup_.answer() == QD_Host_Lookup::KNOWN)
        connect(now);
    else
        lose("there is no host of this name");
}

void QD_Broker_Link::connect(QD_Clock::Time now)
{
    log_.clear();
    doom_.clear();
    errno = 0;
    int error = prepare();
    if (error == MOSQ_ERR_SUCCESS)
        error = mosquitto_connect_bind_async(
            handle_.get(), url_.host.c_str(), url_.port, KEEP_ALIVE_S, nullptr);
    if (error != MOSQ_ERR_SUCCESS) {
        lose(describe(error));
        return;
    }
    state_ = CONNECTING;
    deadline_ = now + CONNECT_BOUND;
    upkeep_ = now + UPKEEP;
}

std::string QD_Broker_Link::describe(int error) const
{
    const auto logged = [this](const char* text) { return log_.find(text) != std::string::npos; };
    const bool no_tls = logged("wrong version number") || logged("unexpected eof");
    if (error == MOSQ_ERR_TLS && !no_tls && url_.scheme == QD_Broker_Url::SHARED_KEY)
        return "it does not have the key that is given here";
    if (logged("certificate verify failed"))
        return "its certificate is not one that is trusted here";
    if (no_tls)
        return "it does not speak TLS there";
    if (error == MOSQ_ERR_ERRNO)
        return strerror(errno);
    if (error == MOSQ_ERR_INVAL && !url_.ca_file.empty())
        return "the certificates in " + url_.ca_file + " cannot be read";
    if (!log_.empty())
        return log_;
    if (error == MOSQ_ERR_CONN_REFUSED)
        return "the connection is refused, or it does not speak TLS there";
    if (error == MOSQ_ERR_CONN_LOST || error == MOSQ_ERR_NO_CONN)
        return state_ == UP
            ? "the connection broke"
            : "it closed the connection without an answer; perhaps it wants TLS, or none";
    return mosquitto_strerror(error);
}

void QD_Broker_Link::connected(int reason)
{
    if (reason != MQTT_RC_SUCCESS) {
        doom_ = reason == MQTT_RC_BAD_USERNAME_OR_PASSWORD || reason == MQTT_RC_NOT_AUTHORIZED
            ? "it does not accept the user or the password"
            : mosquitto_reason_string(reason);
        return;
    }
    const int error = mosquitto_subscribe_v5(
        handle_.get(), nullptr, (prefix_ + "#").c_str(), RECORD_QOS, 0, nullptr);
    if (error != MOSQ_ERR_SUCCESS)
        doom_ = mosquitto_strerror(error);
}

void QD_Broker_Link::subscribed(int count, const int* granted)
{
    if (count < 1 || granted[0] >= MQTT_RC_UNSPECIFIED) {
        published(MQTT_RC_NOT_AUTHORIZED);
        return;
    }
    if (state_ != CONNECTING) // said twice, or while the link is closed
        return;
    state_ = UP;
    deadline_ = QD_Clock::Time::max();
    came_up_ = true;
}

void QD_Broker_Link::published(int reason)
{
    if (reason < MQTT_RC_UNSPECIFIED || state_ == CLOSING)
        return;
    doom_ = "it does not let " + (url_.user.empty() ? "people without a name" : url_.user)
        + " into the conference " + url_.conference;
}

void QD_Broker_Link::publish(const std::string& record)
{
    if (state_ != UP)
        return;
    mosquitto_property* expiry = nullptr;
    mosquitto_property_add_int32(&expiry, MQTT_PROP_MESSAGE_EXPIRY_INTERVAL, EXPIRY_S);
    mosquitto_publish_v5(handle_.get(), nullptr, (prefix_ + owner_).c_str(),
        static_cast<int>(record.size()), record.data(), RECORD_QOS, true, expiry);
    mosquitto_property_free_all(&expiry);
}

void QD_Broker_Link::drop(const std::string& why)
{
    if (state_ == UP)
        lose(why);
}

void QD_Broker_Link::lose(const std::string& why)
{
    handle_.reset();
    came_up_ = false;
    inbox_.clear();
    if (state_ == CLOSING || state_ == CLOSED) {
        state_ = CLOSED;
        deadline_ = QD_Clock::Time::max();
        return;
    }
    if (state_ == UP)
        pause_ = FIRST_PAUSE;
    state_ = WAITING;
    deadline_ = now_is() + spread(pause_);
    pause_ = std::min(pause_ * 2, LONGEST_PAUSE);
    events_.link_down(why);
}

void QD_Broker_Link::close()
{
    if (state_ == CLOSED)
        return;
    const bool up = state_ == UP;
    state_ = CLOSING;
    deadline_ = now_is() + (up ? CLOSE_BOUND : milliseconds(0));
}

void QD_Broker_Link::watch(std::vector<pollfd>& polled) const
{
    if (state_ == NAMING)
        polled.push_back({lookup_.get(), POLLIN, 0});
    const int fd = handle_ ? mosquitto_socket(handle_.get()) : -1;
    if (fd >= 0)
        polled.push_back({fd,
            static_cast<short>(POLLIN | (mosquitto_want_write(handle_.get()) ? POLLOUT : 0)), 0});
}

/// Tells what the library's callbacks have brought, outside of them: the
/// library holds locks while it calls.
void QD_Broker_Link::deliver()
{
    if (std::exchange(came_up_, false))
        events_.link_up();
    for (const auto& [topic, payload] : std::exchange(inbox_, {}))
        if (state_ == UP)
            events_.received(topic, payload);
}

/// Reads and writes what can be at once.
void QD_Broker_Link::transfer()
{
    pollfd ready {mosquitto_socket(handle_.get()), POLLIN, 0};
    int error = MOSQ_ERR_SUCCESS;
    for (int i = 0; error == MOSQ_ERR_SUCCESS && doom_.empty() && i < READS_A_PASS; ++i) {
        ready.events
            = static_cast<short>(POLLIN | (mosquitto_want_write(handle_.get()) ? POLLOUT : 0));
        if (::poll(&ready, 1, 0) <= 0)
            break;
        errno = 0;
        if ((ready.revents & POLLOUT) != 0)
            error = mosquitto_loop_write(handle_.get(), 1);
        if (error == MOSQ_ERR_SUCCESS && (ready.revents & ~POLLOUT) != 0)
            error = mosquitto_loop_read(handle_.get(), 1);
        // While TLS begins the library takes a connection that failed for one under way.
        if (error == MOSQ_ERR_SUCCESS && (ready.revents & POLLHUP) != 0 && state_ == CONNECTING)
            error = MOSQ_ERR_CONN_REFUSED;
        deliver();
    }
    const QD_Clock::Time now = now_is();
    if (error == MOSQ_ERR_SUCCESS && now >= upkeep_) {
        upkeep_ = now + UPKEEP;
        error = mosquitto_loop_misc(handle_.get());
    }
    if (!doom_.empty())
        lose(doom_);
    else if (error != MOSQ_ERR_SUCCESS)
        lose(describe(error));
}

void QD_Broker_Link::serve()
{
    if (handle_)
        transfer();
    const QD_Clock::Time now = now_is();
    if (state_ == NAMING && lookup_.answer() != QD_Host_Lookup::PENDING)
        named(now);
    if (state_ == CLOSING && handle_ && !mosquitto_want_write(handle_.get()) && now < deadline_) {
        mosquitto_disconnect_v5(handle_.get(), MQTT_RC_NORMAL_DISCONNECTION, nullptr);
        deadline_ = now;
    }
    if (now < deadline_)
        return;
    if (state_ == WAITING)
        name(now);
    else if (state_ == NAMING)
        lose("its name cannot be looked up: the name servers do not answer");
    else if (state_ == CONNECTING)
        lose("it does not answer");
    else if (state_ == CLOSING)
        lose("");
}
