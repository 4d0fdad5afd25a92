#pragma once

class KIVString;

/// Shows `message` under `title` with up to three buttons (null: none) and gives the number of the
/// one pressed. Without a window system the text goes to the error console and 1 is the answer.
int run_alert_panel(const char* message, const char* title, const char* first_button,
                    const char* second_button, const char* third_button);
int run_alert_panel(const KIVString& message, const KIVString& title, const char* first_button,
                    const char* second_button, const char* third_button);

using AlertPanel = int (*)(const char* message, const char* title, const char* first_button,
                           const char* second_button, const char* third_button);

/// Installs the panel of a program that has windows; null takes it away. Gives the one before.
AlertPanel set_alert_panel(AlertPanel panel);

/// True when a user can see panels.
bool windowSystemIsRunning();
