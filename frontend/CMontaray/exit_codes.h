#pragma once

/// Exit codes of this program beside those of CommandOutput.
enum ExitCode {
    BAD_FRAME_LIST = 220,
    NOT_STRICT = 221,   // of `--strict`: something was not as it should be
    FILE_MISSING = 222, // of `--check` and `--dry-run`
    FRAMES_LOST = 223,  // the process that had them ended
    NOT_ALL_TOLD = 224, // a list or a log could not be written to its end
    SIGNAL_BASE = 128   // and the number of the signal
};
