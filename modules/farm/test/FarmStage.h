#pragma once

#include "modules/farm/hdr/Child.h"
#include "modules/farm/hdr/JobFolder.h"
#include "tests/support/TempFolder.h"

#include <algorithm>

/// A scene, an output folder and a renderer that is a script, for jobs of files that are whole as
/// soon as they are as long as they have to be.
class FarmStage {
public:
    FarmStage()
    {
        HeldSignals::hold();
        std::filesystem::create_directory(folder.path("scene").str());
        std::filesystem::create_directory(folder.path("frames").str());
        folder.write("scene/Scene.contents", "as submitted");
        set_renderer("");
    }

    /// A renderer that does its work up to `trouble`, which sees a `frame` before it is rendered.
    /// It counts its runs in the file "runs".
    void set_renderer(const std::string& trouble) const
    {
        write_program("renderer", "[ $1 = list_refs ] && echo \"[{\\\"path\\\":\\\"$(dirname "
                                  "$0)/drawing\\\"}]\" && exit\n"
                                  "here=$(dirname \"$0\")\n"
                                  "echo run >> \"$here/runs\"\n"
                                  "write() { echo $1 $(cat $here/scene/Scene.contents) > \"$2\"\n"
                                  "truncate -s 829440 \"$2\"; }\n"
                                  "log() { echo \"{\\\"event\\\":\\\"frame done\\\",\\\"frame\\\":"
                                  "$frame$1}\" >> \"$log\"; }\n"
                                  "while [ $1 != --frames ]; do shift; done\n"
                                  "log=$4/log.jsonl\n"
                                  "for part in $(echo $2 | tr , ' '); do\n"
                                  "for frame in $(seq ${part%-*} ${part#*-}); do\n" +
                                      trouble +
                                      "\nwrite $frame \"$4/$(printf %04d $frame).yuv\"\n"
                                      "log\ndone\ndone\n");
    }

    void write_program(const std::string& name, const std::string& text) const
    {
        folder.write(name + "~", "#!/bin/sh\n" + text);
        const std::filesystem::path program = folder.path(name + "~").str();
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        std::filesystem::rename(program, folder.path(name).str());
    }

    bool has_frame(int frame) const
    {
        const std::string number = std::to_string(frame);
        return folder.has("frames/" + std::string(4 - number.size(), '0') + number + ".yuv");
    }

    int count_runs() const
    {
        const std::string runs = folder.read("runs");
        return static_cast<int>(std::ranges::count(runs, '\n'));
    }

    TempFolder folder;
};
