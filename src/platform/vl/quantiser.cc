#include "platform/vl/quantiser.h"

#include "platform/vl/picture.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double BYTES_PER_KBIT = 125;
constexpr double FILL = 0.96; // of the link: the pacing aims at 0.8 to 1
constexpr double BURST = 1.9; // seconds' worth that a second may take, without intra pictures
constexpr double INTRA_SECONDS = 2;
constexpr double SMALLEST_INTRA_ROOM = 5000;
constexpr double FIRST_SIZE_TIMES_Q = 3000; // of a typical scene
constexpr double LATELY = 0.2;              // the newest picture's share in what is "of late"

// Motion and gaps.
constexpr double MOTION_LATELY = 0.1;
constexpr double FIRST_LOG_AGEING = 6; // lively, until known better
constexpr double AGEING_SHARE = 0.33;  // of the error that suits a picture's age
constexpr double LARGEST_IMBALANCE = 10;
constexpr double GAP_REACTION = 0.1;
constexpr double LONGEST_GAP = 0.5;
constexpr double GAP_LEAD = 1.5; // the pacing follows slowly: never aim far ahead of it
constexpr double DEBT_SECONDS = 2;
constexpr double DEBT_REACTION = 0.05; // of the target, for each second of debt

// Sizes and quantisers.
constexpr double INTRA_POWER = 0.8; // an intra picture's size falls with q to this power
constexpr double PREDICTED_POWER = 1.2;
constexpr double FIRST_RATIO = 4; // of intra to predicted size
constexpr double NEWEST_SHARE = 0.5;
constexpr double LIVELY_RATIO = 3; // from here on finer intra pictures pay
constexpr double CALMNESS_POWER = 0.25;
constexpr double FINEST_INTRA_SHARE = 0.6;
constexpr double SAME_QUANTISER = 1.05;
constexpr int LONG = QD_CODED_SIZE / 3;
constexpr double CLEARLY_LESS = 0.8;
constexpr double REACTION = 0.5;
constexpr double FINEST_STEP = 0.8;
constexpr double COARSEST_STEP = 1.25;

}

QD_Quantiser::QD_Quantiser(double kbps, int fps) :
    bytes_per_second_(kbps * BYTES_PER_KBIT),
    shortest_gap_(1.0 / fps),
    gap_(shortest_gap_),
    real_gap_(shortest_gap_),
    target_(FILL * bytes_per_second_ * gap_),
    q_(std::clamp(FIRST_SIZE_TIMES_Q / target_, 2.0, 20.0)),
    log_ageing_(FIRST_LOG_AGEING)
{
}

double QD_Quantiser::get(bool is_intra) const
{
    if (is_intra)
        return std::max(q_ * intra_share_, FINEST);
    return std::max(q_, fitting_ - 1);
}

int QD_Quantiser::get_intra_room() const
{
    return static_cast<int>(
        std::clamp<double>(INTRA_SECONDS * bytes_per_second_, SMALLEST_INTRA_ROOM, QD_CODED_SIZE));
}

QD_Quantiser::Room QD_Quantiser::get_next_room(double now, bool is_intra) const
{
    if (!is_intra && since_intra_ + 1 == PERIOD)
        return {get_intra_room(), false};
    double room = BURST * bytes_per_second_;
    for (const QD_Coded_Picture& picture : last_second_)
        if (!picture.is_intra && picture.at > now + shortest_gap_ - 1)
            room -= picture.size;
    const bool is_shared = !is_intra && room < 2 * QD_CODED_SIZE;
    return {static_cast<int>(std::min<double>(room, QD_CODED_SIZE)), is_shared};
}

void QD_Quantiser::coded(const QD_Coded_Picture& picture)
{
    since_intra_ = picture.is_intra ? 0 : since_intra_ + 1;
    if (!last_second_.empty()) {
        const double gap = std::max(picture.at - last_second_.back().at, 0.001);
        follow_motion(picture, gap);
        aim(picture, gap);
    }
    if (!picture.is_intra)
        follow_fit(picture);
    follow_sizes(picture);
    std::erase_if(last_second_, [&](const auto& old) { return old.at <= picture.at - 1; });
    last_second_.push_back(picture);
}

// How fast a picture gets out of date. Logarithms let one that is quite new
// among many that are alike count for little; the larger of two changes lets a
// picture count that a slow camera gave twice.
void QD_Quantiser::follow_motion(const QD_Coded_Picture& picture, double gap)
{
    const double change = std::max(picture.change, last_change_);
    log_ageing_ += MOTION_LATELY * (std::log(change / gap + 1) - log_ageing_);
    last_change_ = picture.change;
    error_ += (error_ == 0 ? 1 : LATELY) * (picture.error - error_);
    real_gap_ += LATELY * (gap - real_gap_);
}

// Longer gaps make pictures finer, and older before the next one comes: the
// best gap balances the error of coding with that of age.
void QD_Quantiser::aim(const QD_Coded_Picture& picture, double gap)
{
    const double ageing = std::exp(log_ageing_) * gap_ / 2;
    const double imbalance
        = std::clamp(AGEING_SHARE * error_ / ageing, 1 / LARGEST_IMBALANCE, LARGEST_IMBALANCE);
    const double longest = std::max(std::min(LONGEST_GAP, GAP_LEAD * real_gap_), shortest_gap_);
    gap_ = std::clamp(gap_ * std::pow(imbalance, GAP_REACTION), shortest_gap_, longest);

    debt_ = std::clamp(debt_ + picture.size - FILL * bytes_per_second_ * gap, 0.0,
        DEBT_SECONDS * bytes_per_second_);
    target_ = FILL * bytes_per_second_ * gap_ * (1 - DEBT_REACTION * debt_ / bytes_per_second_);
}

// The mean over a period, were all of it coded now.
double QD_Quantiser::get_mean_size() const
{
    const double intra
        = std::min<double>(intra_cost_ / std::pow(get(true), INTRA_POWER), get_intra_room());
    const double predicted = predicted_cost_ / std::pow(q_, PREDICTED_POWER);
    return (intra + (PERIOD - 1) * predicted) / PERIOD;
}

// A picture that turns out too long is coded again and again, each time a step
// coarser, which takes its time: the next one begins one step below what fitted.
void QD_Quantiser::follow_fit(const QD_Coded_Picture& picture)
{
    const double asked = get(false);
    const bool has_failed = picture.size > LONG && picture.quantiser > asked * SAME_QUANTISER;
    const bool is_short = picture.size < CLEARLY_LESS * QD_CODED_SIZE;
    fitting_ = has_failed ? picture.quantiser : is_short ? FINEST : asked;
}

void QD_Quantiser::settle(double finest_step, double coarsest_step)
{
    const double step = std::pow(get_mean_size() / target_, REACTION);
    q_ = std::clamp(q_ * std::clamp(step, finest_step, coarsest_step), FINEST, COARSEST);
}

// The calmer the scene, the longer an intra picture is looked at: predicted
// ones hand on what it shows.
void QD_Quantiser::follow_sizes(const QD_Coded_Picture& picture)
{
    const bool is_first = intra_cost_ == 0;
    const double predicted_cost = picture.size * std::pow(picture.quantiser, PREDICTED_POWER);
    if (picture.is_intra || is_first)
        intra_cost_ = picture.size * std::pow(picture.quantiser, INTRA_POWER);
    if (is_first)
        predicted_cost_ = predicted_cost / FIRST_RATIO;
    else if (!picture.is_intra)
        predicted_cost_ += NEWEST_SHARE * (predicted_cost - predicted_cost_);

    const double ratio = intra_cost_ / std::pow(q_, INTRA_POWER)
        / (predicted_cost_ / std::pow(q_, PREDICTED_POWER) + 1);
    intra_share_
        = std::clamp(std::pow(ratio / LIVELY_RATIO, -CALMNESS_POWER), FINEST_INTRA_SHARE, 1.0);
    for (int i = 0; is_first && i < PERIOD; ++i) // the first one tells nearly all at once
        settle(0, COARSEST);
    settle(FINEST_STEP, COARSEST_STEP);
}
