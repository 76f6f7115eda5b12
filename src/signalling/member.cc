#include "signalling/member.h"

#include "platform/net/sock_library.h"
#include "signalling/connector.h"
#include "signalling/qd_message.h"

#include <cstdio>
#include <cstring>
#include <utility>

QD_Member::QD_Member() = default;

QD_Member::QD_Member(SOCK_Stream* stream, int id, const char* name, uint32_t host) :
    id_(id),
    host_(host),
    stream_(stream)
{
    set_name(name);
}

QD_Member::QD_Member(const char* name, uint32_t host) : QD_Member(nullptr, 0, name, host) {}

QD_Member::QD_Member(const QD_Member* other) { copy_identity(*other); }

QD_Member& QD_Member::operator=(const QD_Member& other)
{
    if (this == &other)
        return *this;
    QD_Sem_Hold hold(sem_);
    copy_identity(other);
    clear_requests();
    return *this;
}

QD_Member::~QD_Member() = default;

void QD_Member::copy_identity(const QD_Member& other)
{
    id_ = other.id_;
    host_ = other.host_;
    memcpy(name_, other.name_, sizeof name_);
    stream_ = other.stream_;
    display_on_ = other.display_on_;
    internal_id_ = other.internal_id_;
    origin_ = other.origin_;
    memcpy(string_, other.string_, sizeof string_);
    factory_ = other.factory_;
    wake_ = other.wake_;
}

void QD_Member::clear_requests() { open_dpy_ = init_dpy_ = close_dpy_ = display_ = false; }

void QD_Member::set_name(const char* name) { snprintf(name_, sizeof name_, "%s", name); }

void QD_Member::get_name(char (&out)[NAME_SIZE]) const { memcpy(out, name_, sizeof out); }

int QD_Member::get_string(char (&out)[STRING_SIZE]) const
{
    if (*string_ != '\0') {
        memcpy(out, string_, sizeof out);
        return 0;
    }
    char host[SOCK_Library::NAME_SIZE];
    SOCK_Library::gethostname(host_, host);
    constexpr int ROOM = STRING_SIZE - NAME_SIZE - 1;
    snprintf(out, sizeof out, "%s@%.*s", name_, ROOM, host);
    return 0;
}

void QD_Member::fix_string() { get_string(string_); }

int QD_Member::get_participant(_participant* out) const
{
    *out = {};
    out->handle = id_;
    out->set_user(name_);
    out->host = host_;
    return 0;
}

int QD_Member::connect(Reactor* reactor)
{
    QD_Member* const self = this;
    qd_connect_members({&self, 1}, reactor, SOCK_Connector::CONNECT_MS);
    return stream_ == nullptr ? -1 : 0;
}

void QD_Member::close()
{
    if (stream_ != nullptr)
        stream_->close();
}

void QD_Member::send_msg(QD_Message* msg)
{
    if (stream_ != nullptr)
        msg->send(stream_);
}

void QD_Member::update_audio_stat(const rtp_fix_header* hdr, int len)
{
    if (audio_data_)
        audio_data_->frame(hdr, len);
    else
        audio_data_ = std::make_unique<UserData>(hdr, len);
}

void QD_Member::update_video_stat(const rtp_fix_header* hdr, int len)
{
    QD_Sem_Hold hold(sem_);
    if (video_data_)
        video_data_->frame(hdr, len);
    else
        video_data_ = std::make_unique<UserData>(hdr, len);
}

void QD_Member::set_display(QD_Display_Factory* factory, const QD_Wake* wake)
{
    factory_ = factory;
    wake_ = wake;
}

// Wakes the window only when the flag was clear: one pass serves them all.
void QD_Member::request(bool& waits, const char* picture)
{
    bool waited = false;
    {
        QD_Sem_Hold hold(sem_);
        if (picture != nullptr) {
            if (!frame_)
                frame_ = std::make_unique<char[]>(PICTURE_SIZE);
            memcpy(frame_.get(), picture, PICTURE_SIZE);
        }
        waited = std::exchange(waits, true);
    }
    if (!waited && wake_ != nullptr)
        wake_->raise();
}

void QD_Member::open_dpy_req() { request(open_dpy_); }

void QD_Member::close_dpy_req() { request(close_dpy_); }

void QD_Member::display_req(const char* picture) { request(display_, picture); }

// The picture is swapped for the one drawn before, so that the display may be as
// slow as it likes: media threads wait for two pointers at the most.
QD_Member::Request QD_Member::take_request(std::unique_ptr<char[]>& picture)
{
    QD_Sem_Hold hold(sem_);
    if (std::exchange(open_dpy_, false))
        return OPEN;
    if (std::exchange(display_, false)) {
        frame_.swap(picture);
        return PICTURE;
    }
    return std::exchange(close_dpy_, false) ? CLOSE : NONE;
}

void QD_Member::handle_events()
{
    static std::unique_ptr<char[]> picture; // the one being drawn; a single thread draws
    switch (take_request(picture)) {
    case OPEN:
        open_display();
        break;
    case PICTURE:
        display(picture.get());
        break;
    case CLOSE:
        close_display();
        break;
    case NONE:
        break;
    }
}

int QD_Member::open_display()
{
    if (dpy_win || factory_ == nullptr)
        return -1;
    char title[STRING_SIZE];
    get_string(title);
    dpy_win = factory_->make_display(title);
    dpy_win->show();
    init_dpy_ = true;
    return 0;
}

void QD_Member::close_display() { dpy_win.reset(); }

void QD_Member::display(const char* picture)
{
    if (!dpy_win) {
        // A preparation still pending belongs to a window that was closed unused.
        open_display();
        return;
    }
    if (init_dpy_) {
        dpy_win->init_surface();
        init_dpy_ = false;
        return;
    }
    dpy_win->draw(reinterpret_cast<const unsigned char*>(picture));
    ++shown_;
    static int drawn = 0; // by all members together
    if (drawn == 0)
        show_statistics();
    drawn = (drawn + 1) % 3;
}

void QD_Member::show_statistics()
{
    char kbps[32] = "0 kbps";
    char fps[32] = "0 fps";
    {
        QD_Sem_Hold hold(sem_);
        if (video_data_) {
            snprintf(kbps, sizeof kbps, "%4.0f kbps", video_data_->getKbps());
            snprintf(fps, sizeof fps, "%2.1f fps", video_data_->getFps());
        }
    }
    dpy_win->setStatistics(kbps, fps);
}
