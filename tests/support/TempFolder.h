#pragma once

#include "kivlib/hdr/KIVString.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// An empty folder that goes with all it holds. The working directory is put back as well.
class TempFolder {
public:
    explicit TempFolder(const std::filesystem::path& place = std::filesystem::temp_directory_path())
        : old_place(std::filesystem::current_path())
    {
        std::string name = (place / "montaray.XXXXXX").string();
        folder = ::mkdtemp(name.data());
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder()
    {
        std::error_code error;
        std::filesystem::current_path(old_place, error);
        std::filesystem::remove_all(folder, error);
    }

    KIVString path(const std::string& name = "") const { return (folder / name).string(); }

    void write(const std::string& name, const std::string& contents) const
    {
        std::ofstream(folder / name, std::ios::binary) << contents;
    }
    std::string read(const std::string& name) const
    {
        std::ifstream file(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool has(const std::string& name) const { return std::filesystem::exists(folder / name); }

private:
    std::filesystem::path old_place;
    std::filesystem::path folder;
};
