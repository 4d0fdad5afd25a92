#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

class FileSearch;

// What `montaray-scene` can do; each gives the exit status.

enum ExitStatus {
    DONE = 0,
    FAILED = 1,
    BAD_INPUT = 2,
    FRAMES_COMING = 3, // of a render job: some are not there, and tasks for them wait or run
    FRAMES_MISSING = 4 // the same, and nobody is at it
};

/// Makes the scene that a JSON file describes.
int build_scene(const std::string& description, const std::string& scene_folder);

/// Prints the sheet and the graph of a scene, and what became of lost files if a search is given;
/// it may be null.
int show_scene(const std::string& scene_folder, FileSearch* search);

/// Tells all that is wrong with the files of a scene, and changes nothing.
int check_scene(const std::string& scene_folder, FileSearch& search);

/// Ends or undoes a save that was interrupted.
int recover_scene(const std::string& scene_folder);

/// Makes a numbered copy beside a scene, and deletes older ones beyond `keep`, if it is given.
int back_up_scene(const std::string& scene_folder, std::optional<int> keep);

/// Writes an image in tiles, with its smaller copies.
int tile_image(const std::string& image, const std::string& tiled_image);

/// Sends frames of a scene to the farm, all of them if no range is given. `options` are those of a
/// render.
int submit_render(const std::string& scene_folder, std::optional<std::pair<int, int>> frames,
                  const std::vector<std::string>& options);

/// Tells how far the render jobs of an output folder are, once they have ended if `is_watch`.
int show_farm_status(const std::string& output_folder, bool as_json, bool is_watch);

/// Takes the render jobs of an output folder out of the queue.
int cancel_farm_jobs(const std::string& output_folder);
