#pragma once

#include "kivlib/hdr/Checksum.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The list of the parts that a save has brought to the disc under their names with "~". Once it
/// stands in the folder, whole, the save has happened: whoever comes next can end the moves.
///
///     COMMIT 1
///     Graph 4711 0123456789abcdef      name, bytes, checksum; a line for each part
///     END fedcba9876543210             checksum of all before it
class CommitRecord {
public:
    struct Part {
        KIVString name;
        FileSum sum;
    };

    static constexpr char FILE_NAME[] = "Scene.commit~";
    static constexpr std::size_t MOST_BYTES = 65536;

    explicit CommitRecord(std::vector<Part> parts) : parts(std::move(parts)) {}

    const std::vector<Part>& inq_parts() const { return parts; }
    /// Whether a reader would believe it.
    bool names_only_parts() const { return parse(inq_text()).has_value(); }
    std::string inq_text() const;

    /// None if the text is torn, or names what is no part of a scene.
    static std::optional<CommitRecord> parse(std::string_view text);

    /// The record in `folder`: none if it is torn or there is none. `is_unread` if there is one,
    /// and the disc or the system does not give it out now.
    static std::optional<CommitRecord> read(const KIVString& folder, bool* is_unread);

    /// Waits until the disc holds the record in `folder`, which an interrupted save may not have
    /// done. False if it may not.
    static bool sync(const KIVString& folder);

    /// Puts the record into `folder`. False if it may not have reached the disc.
    bool write(const KIVString& folder) const;

private:
    std::vector<Part> parts;
};
