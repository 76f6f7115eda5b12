#include "platform/vl/capture.h"

#include "platform/base/mutex.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

/// The newest picture, between the reader and whoever asks for it.
class QD_Picture_Shelf {
public:
    enum State { OPENING, PRESENT, ABSENT, RELEASED };

    // The reader's side.
    void put(const std::vector<char>& picture)
    {
        {
            QD_Lock hold(mutex_);
            newest_ = picture;
            ++number_;
            state_ = PRESENT;
        }
        changed_.raise();
    }
    void set_state(State state)
    {
        {
            QD_Lock hold(mutex_);
            state_ = state;
            newest_.clear(); // what was seen before is not to be shown again
        }
        changed_.raise();
    }
    QD_Clock::Time asked() const
    {
        QD_Lock hold(mutex_);
        return asked_;
    }

    // The other side. Copies a picture that is newer than `*given`.
    bool take(unsigned* given, char* out) const
    {
        QD_Lock hold(mutex_);
        if (newest_.empty() || number_ == *given)
            return false;
        *given = number_;
        memcpy(out, newest_.data(), newest_.size());
        return true;
    }
    State ask(QD_Clock::Time now)
    {
        QD_Lock hold(mutex_);
        asked_ = now;
        return state_;
    }
    const QD_Wake& changed() const { return changed_; }

private:
    mutable QD_Mutex mutex_;
    std::vector<char> newest_ QD_GUARDED_BY(mutex_);
    unsigned number_ QD_GUARDED_BY(mutex_) = 0;
    State state_ QD_GUARDED_BY(mutex_) = OPENING;
    QD_Clock::Time asked_ QD_GUARDED_BY(mutex_) = QD_Clock::real().now();
    QD_Wake changed_;
};

using State = QD_Picture_Shelf::State;

/// Opens the camera, reads it, and opens it again when it has gone. Owns, or shares
/// in, all that it uses: a device may hold it up for ever.
class QD_Camera_Thread : public SprocThread {
public:
    QD_Camera_Thread(std::unique_ptr<QD_Camera> camera, std::shared_ptr<QD_Picture_Shelf> shelf,
        const QD_Capture_Times& times) :
        camera_(std::move(camera)),
        shelf_(std::move(shelf)),
        times_(times)
    {
    }

protected:
    int run() override
    {
        while (running != 0) {
            if (!is_wanted()) {
                shelf_->set_state(State::RELEASED);
                rest_until_wanted();
                continue;
            }
            if (camera_->open() == 0) {
                read_camera();
                camera_->close();
            }
            if (running != 0 && is_wanted()) {
                shelf_->set_state(State::ABSENT);
                pause(static_cast<int>(times_.retry.count()));
            }
        }
        return 0;
    }

private:
    bool is_wanted() const { return QD_Clock::real().now() - shelf_->asked() < times_.idle; }

    void rest_until_wanted()
    {
        while (running != 0 && !is_wanted())
            pause(60'000);
    }

    void read_camera()
    {
        std::vector<char> picture(QD_PICTURE_SIZE);
        QD_Clock::Time last = QD_Clock::real().now();
        while (running != 0 && is_wanted()) {
            const int result = camera_->read(picture.data());
            const QD_Clock::Time now = QD_Clock::real().now();
            if (result < 0 || now - last > times_.dead)
                return;
            if (result == 0)
                continue;
            last = now;
            shelf_->put(picture);
        }
    }

    const std::unique_ptr<QD_Camera> camera_;
    const std::shared_ptr<QD_Picture_Shelf> shelf_;
    const QD_Capture_Times times_;
};

QD_Capture::QD_Capture(std::unique_ptr<QD_Camera> camera, QD_Capture_Times times) :
    times_(times),
    shelf_(std::make_shared<QD_Picture_Shelf>()),
    reader_(std::make_shared<QD_Camera_Thread>(std::move(camera), shelf_, times))
{
}

QD_Capture::~QD_Capture() { reader_->let_go(); }

int QD_Capture::start() { return reader_->start(); }

void QD_Capture::set_rate(int fps) { fps_ = std::max(fps, 1); }

// Pictures come at even distances as long as the caller keeps up.
void QD_Capture::wait_until_due(QD_Clock::Time latest)
{
    const auto interval = std::chrono::microseconds(1'000'000 / fps_);
    const QD_Clock::Time now = QD_Clock::real().now();
    const QD_Clock::Time due = std::clamp(due_, now, now + interval);
    std::this_thread::sleep_until(std::min(due, latest));
    due_ = due + interval;
}

void QD_Capture::get(char* out)
{
    const QD_Clock& clock = QD_Clock::real();
    const QD_Clock::Time latest = clock.now() + times_.stall;
    wait_until_due(latest);
    for (;;) {
        const QD_Clock::Time now = clock.now();
        const State state = shelf_->ask(now);
        if (state == State::RELEASED)
            reader_->wake();
        if (shelf_->take(&given_, out)) {
            stalled_ = false;
            return;
        }
        const bool may_come = state != State::ABSENT && !stalled_;
        if (!may_come)
            break;
        if (now >= latest) {
            stalled_ = true;
            break;
        }
        clock.wait(shelf_->changed(), latest);
        shelf_->changed().take();
    }
    card_.paint_now(out);
}
