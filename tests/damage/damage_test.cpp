#include "imagelib/hdr/KIVPixmap.h"
#include "kivlib/hdr/Checksum.h"
#include "render/hdr/RenderScene.h"
#include "tests/museum/OneOfEach.h"
#include "tests/support/Captured.h"
#include "tests/support/OldAssets.h"
#include "tests/support/TempFolder.h"

#include <cstring>
#include <gtest/gtest.h>
#include <iostream>
#include <random>
#include <unistd.h>

// Damage to the files of a scene, byte by byte. With MONTARAY_LONG in the environment every bit has
// its turn, otherwise one of each byte, always the same.

namespace {
const bool is_long = std::getenv("MONTARAY_LONG") != nullptr;

/// Saves wait for the disc; in memory thousands of them are quick.
const bool is_in_memory = ::access("/dev/shm", W_OK) == 0 && ::setenv("TMPDIR", "/dev/shm", 1) == 0;

constexpr std::size_t CHECKSUM_SIZE = sizeof(Checksum::Value);

std::string flipped(std::string bytes, std::size_t at, int bit)
{
    bytes[at] = static_cast<char>(bytes[at] ^ (1 << bit));
    return bytes;
}

/// A file that was written so: its checksum fits whatever it holds.
std::string with_checksum(std::string bytes)
{
    const std::size_t size = bytes.size() - CHECKSUM_SIZE;
    Checksum sum;
    sum.add(bytes.data(), size);
    const Checksum::Value checksum = sum.get();
    std::memcpy(bytes.data() + size, &checksum, CHECKSUM_SIZE);
    return bytes;
}

/// What a program does with a scene: looks at all cells and renders.
void use(KIVScene& scene)
{
    const std::unique_ptr<KIVLinkedList> columns(scene.inq_xsheet()->inq_deep_sub_column_list());
    for (SubColumn* column : columns->of<SubColumn>())
        for (int frame = 0; frame <= 5; ++frame)
            column->inq_cell(frame);
    RenderScene renderer(&scene, 8, 6, 1.0, 0, 0, 8, 0);
    for (const int frame : {1, 3}) {
        renderer.set_camera_view();
        const std::unique_ptr<KIVPixmap> pixmap(renderer.render_frame(frame, nullptr));
    }
}

/// A small scene on disc, of which one file is damaged in many ways.
class DamagedScene : public testing::TestWithParam<const char*> {
protected:
    DamagedScene()
    {
        EXPECT_TRUE(OneOfEach().scene->save_to_file(folder.path("shot"), true, true, false));
        if (GetParam() == std::string("Assets")) {
            std::filesystem::remove(folder.path("shot/kvd").str());
            folder.write(file(), tell_old_assets());
        }
        whole = folder.read(file());
    }

    ~DamagedScene() override
    {
        std::cout << GetParam() << ": " << whole.size() << " bytes, " << refused
                  << " damages refused, " << loaded << " loaded\n";
    }

    static std::string file() { return std::string("shot/") + GetParam(); }

    template <class Try> void for_each_flip(std::size_t size, Try attempt)
    {
        std::minstd_rand random(1);
        for (std::size_t at = 0; at < size && !HasFailure(); ++at) {
            const int chosen = static_cast<int>(random() % 8);
            for (int bit = 0; bit < 8; ++bit)
                if (is_long || bit == chosen) {
                    SCOPED_TRACE(testing::Message() << "byte " << at << " bit " << bit);
                    attempt(flipped(whole, at, bit));
                }
        }
    }

    /// One message and no scene.
    void expect_refused(const std::string& damaged)
    {
        const Captured captured;
        folder.write(file(), damaged);
        EXPECT_FALSE(load(folder.path("shot")));
        EXPECT_EQ(captured.inq_alerts().size(), 1U);
        EXPECT_EQ(folder.read(file()), damaged);
        ++refused;
    }

    /// Either that, or a scene that holds together, with no more than one message.
    void expect_refused_or_sound(const std::string& damaged)
    {
        const Captured captured;
        folder.write(file(), damaged);
        const Scene scene = load(folder.path("shot"));
        EXPECT_LE(captured.inq_alerts().size(), 1U);
        if (!scene) {
            EXPECT_EQ(captured.inq_alerts().size(), 1U);
            ++refused;
            return;
        }
        use(*scene);
        EXPECT_TRUE(scene->save_to_file(folder.path("again"), true, true, false));
        EXPECT_TRUE(load(folder.path("again")));
        ++loaded;
    }

    TempFolder folder;
    std::string whole;
    int refused = 0;
    int loaded = 0;
};
} // namespace

TEST_P(DamagedScene, is_refused_for_any_bit)
{
    for_each_flip(whole.size(), [&](const std::string& damaged) { expect_refused(damaged); });
}

TEST_P(DamagedScene, is_refused_wherever_a_file_ends)
{
    for (std::size_t size = 0; size < whole.size() && !HasFailure(); ++size) {
        SCOPED_TRACE(testing::Message() << "cut to " << size);
        expect_refused(whole.substr(0, size));
    }
}

TEST_P(DamagedScene, is_refused_or_sound_where_the_checksum_fits)
{
    for_each_flip(whole.size() - CHECKSUM_SIZE, [&](const std::string& damaged) {
        expect_refused_or_sound(with_checksum(damaged));
    });
}

INSTANTIATE_TEST_SUITE_P(Parts, DamagedScene,
                         testing::Values("Scene.contents", "XSheet", "CoverSheet", "Graph", "kvd",
                                         "Assets"),
                         [](const auto& part) {
                             std::string name = part.param;
                             std::erase(name, '.');
                             return name;
                         });
