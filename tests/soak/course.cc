#include "tests/soak/course.h"

#include <algorithm>

namespace {

constexpr auto PATIENCE = std::chrono::seconds(60);
constexpr size_t AT_THE_SOUND_SERVER = 2; // it mixes no more than 32 streams
constexpr size_t CUT_OFF = 1;             // the seat whose host is, now and then
constexpr const char* SINKS[AT_THE_SOUND_SERVER] = {"speaker", "speaker2"};

// Each voice that is to be found in the mix is a tone of its own, in hertz, the guests share one.
// None is a multiple of 50: all GSM frames of such a tone come to be alike, as those of silence.
constexpr int MICROPHONE = 440;
constexpr int GUEST = 260;
constexpr size_t FIRST = 510; // of a member who stays; the next has 100 more

// The sum of more tones than these would be clipped at the loudspeaker.
constexpr size_t MOST_MEMBERS_JUDGED = 16;

bool is_at_the_sound_server(size_t seat) { return seat < AT_THE_SOUND_SERVER; }

}

// The keyboard stays where the persons put it, whatever window comes or goes.
QD_Soak_Course::QD_Soak_Course(size_t members, bool disturbed) :
    half_(members / 2),
    disturbed_(disturbed),
    network_(static_cast<int>(2 * half_ + 1)) // the last one is the ear's
{
    qd_write_file(dir_ / "resources",
        "Mwm*startupKeyFocus: False\nMwm*autoKeyFocus: False\nMwm*deiconifyKeyFocus: False\n");
    setenv("XENVIRONMENT", (dir_ / "resources").c_str(), 1);
    x_server_.manage();
}

void QD_Soak_Course::hold(bool held, const std::string& what)
{
    if (!held && trouble_.empty())
        trouble_ = what;
}

bool QD_Soak_Course::well() const
{
    std::string trouble = trouble_;
    for (const auto& member : seats_)
        if (member && trouble.empty())
            trouble = member->trouble();
    if (disturbances_ && trouble.empty())
        trouble = disturbances_->trouble();
    if (!trouble.empty())
        printf("TROUBLE: %s\n", trouble.c_str());
    return trouble.empty();
}

bool QD_Soak_Course::begin(QD_Figures& figures)
{
    hold(!x_server_.display().empty() && sound_.start(), "no X server or no sound server");
    feed_microphone();
    // A short run beside other tests has no processor to spare for sound without a gap.
    for (size_t seat = 0; disturbed_ && seat < AT_THE_SOUND_SERVER; ++seat)
        speakers_.emplace_back(SINKS[seat], tones_at(seat)).record();
    seats_.resize(2 * half_);
    const auto speakers = static_cast<int>(half_);
    ear_.emplace(network_, static_cast<int>(2 * half_ + 1), speakers, broker_.place());
    hold(ear_->joined(), "nobody listens");
    for (size_t seat = 0; seat < seats_.size() && trouble_.empty(); ++seat) {
        join(seat);
        if (seat < half_ && seats_[seat]) {
            figures.watch("client of " + seats_[seat]->label(), seats_[seat]->client());
            figures.watch("its companion", seats_[seat]->process().pid());
        }
    }
    // Before options are applied the loudspeaker is so loud that it clips.
    for (size_t seat = 0; seat < speakers_.size() && well(); ++seat)
        seats_[seat]->choose_connection(1);
    wait_for_sound("at first");
    if (trouble_.empty())
        disturbances_.emplace(
            QD_Disturbances::Victims {[this] { return sound_.pid(); }, x_server_.pid(), broker_,
                network_, static_cast<int>(CUT_OFF + 1), [this] { return cut_off_is_found(); }},
            QD_Disturbances::Witnesses {*ear_, speakers_});
    if (trouble_.empty() && disturbed_)
        disturbances_->start();
    return well();
}

void QD_Soak_Course::join(size_t seat)
{
    QD_Soak_Member::Part part;
    part.name = (seat < half_ ? "m" : "guest") + std::to_string(++joinings_);
    part.address = address(seat);
    part.at = network_.at(seat + 1);
    part.cut_off = address(CUT_OFF);
    part.mic = voice(seat);
    part.speaker = is_at_the_sound_server(seat) ? std::string("pulse:") + SINKS[seat] : "null";
    seats_[seat] = std::make_unique<QD_Soak_Member>(part, broker_.place());
    seats_[seat]->comes();
}

void QD_Soak_Course::leave(size_t seat)
{
    seats_[seat]->leave(seat % 2 == 0);
    hold(seats_[seat]->trouble().empty(), seats_[seat]->trouble());
    seats_[seat].reset();
}

void QD_Soak_Course::use_windows(QD_Soak_Member& member, size_t number)
{
    member.choose_connection(3 - static_cast<int>(number % 4));
    member.switch_camera();
    member.look_at_statistics();
    member.move_cutoff();
}

void QD_Soak_Course::restore_windows(QD_Soak_Member& member, size_t number)
{
    member.choose_connection(static_cast<int>(number % 4));
    member.choose_rate(number % 4 != 1); // the LAN's is always high once it is applied again
    member.switch_camera();
}

std::string QD_Soak_Course::voice(size_t seat) const
{
    if (is_at_the_sound_server(seat))
        return "pulse:microphone";
    const size_t hertz = seat < half_ ? FIRST + 100 * (seat - AT_THE_SOUND_SERVER) : GUEST;
    return "tone:" + std::to_string(hertz);
}

/// What has to sound at a loudspeaker all the time: the others who stay.
std::vector<int> QD_Soak_Course::tones_at(size_t seat) const
{
    std::vector<int> tones;
    if (2 * half_ > MOST_MEMBERS_JUDGED)
        return tones;
    for (size_t other = 0; other < half_; ++other)
        if (other != seat)
            tones.push_back(is_at_the_sound_server(other)
                    ? MICROPHONE
                    : static_cast<int>(FIRST + 100 * (other - AT_THE_SOUND_SERVER)));
    return tones;
}

void QD_Soak_Course::feed_microphone()
{
    voice_.emplace(std::vector<std::string> {"sh", "-c",
        "sox -q -n -t raw -r 8000 -e signed -b 16 -c 1 - synth 100000 sine "
            + std::to_string(MICROPHONE)
            + " 2>/dev/null"
              " | pacat --raw --format=s16le --rate=8000 --channels=1 -d micfeed 2>/dev/null"});
}

void QD_Soak_Course::start_sound()
{
    hold(sound_.start(), "the sound server does not start");
    feed_microphone();
    for (QD_Soak_Loudspeaker& speaker : speakers_)
        speaker.record();
    wait_for_sound("with the new sound server");
}

void QD_Soak_Course::wait_for_sound(const std::string& when)
{
    const auto start = QD_Soak_Ear::Clock::now();
    const bool heard = qd_wait_for([&] { return ear_->silent_since(start).empty(); }, PATIENCE);
    hold(heard, when + " not heard:" + ear_->silent_since(start));
    for (const QD_Soak_Loudspeaker& speaker : speakers_) {
        const bool played
            = qd_wait_for([&] { return speaker.played_since(start).steady; }, PATIENCE);
        hold(played,
            when + " not played at " + speaker.sink() + ":" + speaker.played_since(start).missed);
    }
}

// A broker or a host that has just returned is not found at once.
void QD_Soak_Course::wait_for_broker()
{
    for (const auto& member : seats_)
        hold(!member
                || qd_wait_for(
                    [&] {
                        return member->count_said(" is lost: ") == member->count_said(" is back\n");
                    },
                    PATIENCE),
            "not everybody has found the broker again");
}

/// Whether the member who is cut off now and then has its broker, and is in for all who stay. Any
/// thread, once all of them are in.
bool QD_Soak_Course::cut_off_is_found() const
{
    const std::string& label = seats_[CUT_OFF]->label();
    bool found
        = seats_[CUT_OFF]->count_said(" is lost: ") == seats_[CUT_OFF]->count_said(" is back\n");
    for (size_t seat = 0; seat < half_; ++seat)
        found = found
            && (seat == CUT_OFF
                || seats_[seat]->count_said(label + " has joined\n")
                    > seats_[seat]->count_said(label + " is gone"));
    return found;
}

void QD_Soak_Course::restart_broker()
{
    wait_for_broker();
    const auto said_once_more = [&](const std::string& text, const std::vector<size_t>& before) {
        for (size_t seat = 0; seat < seats_.size(); ++seat)
            hold(qd_wait_for(
                     [&] { return seats_[seat]->count_said(text) > before[seat]; }, PATIENCE),
                seats_[seat]->label() + " does not say that the broker " + text);
    };
    std::vector<size_t> losses;
    std::vector<size_t> returns;
    for (const auto& member : seats_) {
        losses.push_back(member->count_said(" is lost: "));
        returns.push_back(member->count_said(" is back\n"));
    }
    broker_.stop(SIGTERM);
    said_once_more(" is lost: ", losses);
    hold(broker_.start(), "the broker does not start");
    said_once_more(" is back\n", returns);
}

bool QD_Soak_Course::round()
{
    for (size_t number = 0; number < half_; ++number) {
        const size_t guest = half_ + number;
        leave(guest);
        if (number == 0) {
            const auto calm = disturbances_->calm();
            sound_.crash();
            use_windows(*seats_[number], number);
            start_sound();
        } else {
            use_windows(*seats_[number], number);
        }
        {
            const auto calm = disturbances_->calm(); // who comes has to find the broker
            wait_for_broker();
            join(guest);
            if (well())
                seats_[number]->put_away(seats_[guest]->label());
        }
        restore_windows(*seats_[number], number);
        if (!well())
            return false;
    }
    const auto calm = disturbances_->calm();
    wait_for_broker();
    for (const auto& member : seats_)
        member->lists(seats_.size() + 1);
    restart_broker();
    for (const auto& member : seats_)
        member->lists(seats_.size() + 1);
    return well();
}

bool QD_Soak_Course::end()
{
    if (disturbed_)
        disturbances_->report();
    hold(disturbances_->trouble().empty(), disturbances_->trouble());
    disturbances_.reset();
    for (size_t seat = 0; seat < seats_.size(); ++seat)
        leave(seat);
    seats_.clear();
    hold(ear_->leave(), "the ear does not end well");
    return well();
}
