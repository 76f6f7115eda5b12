// How coarsely to code the next picture, so that the link is filled and not flooded.
#pragma once

#include <vector>

/// One picture as it was coded.
struct QD_Coded_Picture {
    double at;        // seconds, on any clock
    int size;         // bytes
    bool is_intra;    // as asked for
    double quantiser; // in the end, at least the one asked for
    double error;     // mean square of the luminance, coded against captured
    double change;    // the same, captured against the picture before; 0 for the first
};

/// Plain arithmetic, no lock: whoever codes owns one. The sender's pacing only
/// stretches the gaps between pictures; this decides what one picture costs,
/// and so what gaps the pacing arrives at.
///
/// Three aims, in this order: no second takes more than twice the link's share
/// plus an intra picture; the link is nearly filled; a picture is as finely
/// coded as is worth it, before it is out of date.
class QD_Quantiser {
public:
    static constexpr double FINEST = 1;
    static constexpr double COARSEST = 31;
    static constexpr double FIRST_KBPS = 20;
    static constexpr int FIRST_FPS = 5;
    static constexpr int PERIOD = 10; // pictures, from one intra picture to the next

    /// For `kbps` kbit/s (above 0) in `fps` pictures a second (1..30).
    explicit QD_Quantiser(double kbps = FIRST_KBPS, int fps = FIRST_FPS);

    /// The quantiser for the next picture, FINEST..COARSEST.
    double get(bool is_intra) const;

    /// The bytes that a picture is to have in the long run.
    double get_target() const { return target_; }

    /// The bytes that an intra picture should not exceed: a longer one would
    /// hold the link up for too long.
    int get_intra_room() const;

    /// So many bytes, at most QD_CODED_SIZE and possibly negative; less those
    /// of the picture that comes before if that shares them.
    struct Room {
        int bytes;
        bool is_shared;
    };

    /// What a picture about to be coded at `now` leaves to the one after it.
    Room get_next_room(double now, bool is_intra) const;

    /// Counts a coded picture.
    void coded(const QD_Coded_Picture& picture);

private:
    void follow_motion(const QD_Coded_Picture& picture, double gap);
    void aim(const QD_Coded_Picture& picture, double gap);
    void follow_fit(const QD_Coded_Picture& picture);
    void follow_sizes(const QD_Coded_Picture& picture);
    void settle(double finest_step, double coarsest_step);
    double get_mean_size() const;

    double bytes_per_second_;
    double shortest_gap_; // seconds between pictures
    double gap_;          // aimed at
    double real_gap_;     // of late
    double debt_ = 0;     // bytes sent of late beyond what fills the link
    double target_;
    double q_;
    double intra_share_ = 1;    // of q_, for intra pictures
    double intra_cost_ = 0;     // bytes at quantiser 1, 0 before the first picture
    double predicted_cost_ = 0; // likewise
    double fitting_ = 0;        // what predicted pictures fitted with
    double error_ = 0;          // of late
    double log_ageing_;         // of the mean square change in a second, of late
    double last_change_ = 0;
    int since_intra_ = 0;
    std::vector<QD_Coded_Picture> last_second_;
};
