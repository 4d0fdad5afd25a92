#pragma once

#include "kivlib/hdr/CoverSheetDefaults.h"
#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <filesystem>
#include <string>

/// While this lives, the user's settings are an empty folder, and new scenes start from nothing.
class OwnSettings {
public:
    OwnSettings()
    {
        if (const char* old = std::getenv(VARIABLE))
            old_folder = old;
        ::setenv(VARIABLE, folder.path().c_str(), 1);
        forget_defaults();
    }
    OwnSettings(const OwnSettings&) = delete;
    OwnSettings& operator=(const OwnSettings&) = delete;
    ~OwnSettings()
    {
        forget_defaults();
        if (old_folder.empty())
            ::unsetenv(VARIABLE);
        else
            ::setenv(VARIABLE, old_folder.c_str(), 1);
    }

private:
    static constexpr char VARIABLE[] = "XDG_CONFIG_HOME";

    // Storing makes the process read the file again, which is gone by then.
    void forget_defaults() const
    {
        CoverSheetDefaults().store_in_central_file();
        std::filesystem::remove_all(folder.path("Montaray").str());
    }

    TempFolder folder;
    std::string old_folder;
};
