#include "kivlib/hdr/alert_panel.h"

#include "kivlib/hdr/ConsoleOStream.h"

namespace {
AlertPanel our_panel = nullptr;
}

int run_alert_panel(const char* message, const char* title, const char* first_button,
                    const char* second_button, const char* third_button)
{
    if (our_panel)
        return our_panel(message, title, first_button, second_button, third_button);
    *cerrp << title << ": " << message << "\n";
    return 1;
}

int run_alert_panel(const KIVString& message, const KIVString& title, const char* first_button,
                    const char* second_button, const char* third_button)
{
    return run_alert_panel(message.c_str(), title.c_str(), first_button, second_button,
                           third_button);
}

AlertPanel set_alert_panel(AlertPanel panel)
{
    return std::exchange(our_panel, panel);
}

bool windowSystemIsRunning()
{
    return our_panel != nullptr;
}
