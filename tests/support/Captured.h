#pragma once

#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/alert_panel.h"

#include <string>
#include <utility>
#include <vector>

/// What the process says while this lives: on its two consoles and by alert panels.
class Captured {
public:
    Captured()
        : old_output(std::exchange(coutp, &output)), old_errors(std::exchange(cerrp, &errors)),
          old_panel(set_alert_panel(take_alert))
    {
        our_alerts.clear();
    }
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;
    ~Captured()
    {
        coutp = old_output;
        cerrp = old_errors;
        set_alert_panel(old_panel);
    }

    std::string inq_output() const { return output.inq_text().str(); }
    std::string inq_errors() const { return errors.inq_text().str(); }
    const std::vector<std::string>& inq_alerts() const { return our_alerts; }

private:
    static int take_alert(const char* message, const char*, const char*, const char*, const char*)
    {
        our_alerts.emplace_back(message);
        return 1;
    }

    inline static std::vector<std::string> our_alerts;
    StringOStream output;
    StringOStream errors;
    KIVOStream* old_output;
    KIVOStream* old_errors;
    AlertPanel old_panel;
};
