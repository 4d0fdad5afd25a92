#pragma once

/// The options of a render in one value, for programs that keep several sets of them.
class MontarayRenderModes {
public:
    /// `quality` 0 is the high quality.
    MontarayRenderModes(bool is_16_bps, bool is_colour, int quality, bool run_filters,
                        bool ip_quality)
        : is_16_bps(is_16_bps), is_colour(is_colour), quality(quality), run_filters(run_filters),
          ip_quality(ip_quality)
    {}

    bool inq_is_16_bps() const { return is_16_bps; }
    void set_is_16_bps(bool value) { is_16_bps = value; }
    bool inq_is_colour() const { return is_colour; }
    void set_is_colour(bool value) { is_colour = value; }
    int inq_quality() const { return quality; }
    void set_quality(int value) { quality = value; }
    bool inq_run_filters() const { return run_filters; }
    void set_run_filters(bool value) { run_filters = value; }
    bool inq_ip_quality() const { return ip_quality; }
    void set_ip_quality(bool value) { ip_quality = value; }

private:
    bool is_16_bps;
    bool is_colour;
    int quality;
    bool run_filters;
    bool ip_quality;
};
