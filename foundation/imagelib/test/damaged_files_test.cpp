#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/hdr/MipMap.h"
#include "imagelib/hdr/make_tiled_image.h"
#include "imagelib/src/PngInput.h"
#include "imagelib/test/PixmapGrid.h"
#include "kivlib/hdr/ClassManager.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

// Damaged files of every format, read in a child process with limits to its memory and time. With
// MONTARAY_LONG in the environment there are 5000 of each, otherwise 300, always the same.

namespace {
const int FILE_COUNT = std::getenv("MONTARAY_LONG") ? 5000 : 300;
constexpr std::size_t MOST_MEMORY = std::size_t{1} << 30;
constexpr unsigned LONGEST = 10; // seconds for a file

/// A number in the head of a file.
struct Field {
    std::size_t at;
    std::size_t size;
};
using Fields = std::vector<Field>;

void add_text(Fields& fields, const std::string& file)
{
    for (std::size_t i = 3; i < 12 && i < file.size(); ++i) // digits and what stands between them
        fields.push_back({i, 1});
}

/// Every value and every count of the first directory.
void add_tiff(Fields& fields, const std::string& file)
{
    std::uint32_t at = 0;
    std::memcpy(&at, file.data() + 4, sizeof(at));
    for (std::size_t entry = at + 2; entry + 12 < file.size() && fields.size() < 30; entry += 12) {
        fields.push_back({entry + 8, 2});
        fields.push_back({entry + 4, 4});
    }
}

/// Of the frame, which lies in one scan or in several.
void add_jpeg(Fields& fields, const std::string& file)
{
    const std::size_t frame = std::min(file.find("\xFF\xC0"), file.find("\xFF\xC2"));
    fields = {{frame + 5, 2}, {frame + 7, 2}, {frame + 9, 1}, {frame + 11, 1}};
}

Fields find_sizes(const std::string& file)
{
    Fields fields;
    if (file.starts_with("II"))
        add_tiff(fields, file);
    else if (file.starts_with("P"))
        add_text(fields, file);
    else if (file.starts_with("\x89PNG"))
        fields = {{16, 4}, {20, 4}, {24, 1}, {25, 1}, {28, 1}};
    else if (file.starts_with("GIF"))
        fields = {{6, 2}, {8, 2}, {10, 1}, {file.find('\x2C') + 5, 2}, {file.find('\x2C') + 7, 2}};
    else if (file.starts_with("\xFF\xD8"))
        add_jpeg(fields, file);
    else
        fields = {{0, 1}, {2, 1}, {5, 2}, {12, 2}, {14, 2}, {16, 1}};
    return fields;
}

std::uint32_t inq_big_endian(const std::string& file, std::size_t at)
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number = number << 8 | static_cast<unsigned char>(file[at + i]);
    return number;
}

/// PNG has a checksum over each of its chunks, as far as they can still be told apart.
void mend_checksums(std::string& file)
{
    constexpr std::size_t AROUND = 12; // length, name and checksum
    if (!file.starts_with("\x89PNG"))
        return;
    for (std::size_t at = 8; at + AROUND <= file.size();) {
        const std::size_t bytes = inq_big_endian(file, at);
        if (bytes > file.size() - at - AROUND)
            return;
        const auto* text = reinterpret_cast<const Bytef*>(file.data() + at + 4);
        const uLong sum = ::crc32(0, text, static_cast<uInt>(bytes + 4));
        at += AROUND + bytes;
        for (std::size_t i = 0; i < 4; ++i)
            file[at - 4 + i] = static_cast<char>(sum >> (24 - 8 * i));
    }
}

enum Damage { CUT, FLIPPED, WRONG_SIZES, N_DAMAGES };

std::string damage(std::string file, Damage kind, std::minstd_rand& random)
{
    const auto any = [&](std::size_t count) { return random() % count; };
    if (kind == CUT)
        return file.substr(0, any(file.size()));
    if (kind == FLIPPED) {
        for (std::size_t n = 1 + any(4); n > 0; --n) {
            const std::size_t at = any(file.size());
            file[at] = static_cast<char>(file[at] ^ (1 << any(8)));
        }
        if (any(2) == 0)
            mend_checksums(file);
        return file;
    }
    const Fields fields = find_sizes(file);
    for (std::size_t n = 1 + any(2); n > 0; --n) {
        const Field& field = fields[any(fields.size())];
        const bool is_huge = any(2) == 0;
        for (std::size_t i = 0; i < field.size; ++i)
            file[field.at + i] = static_cast<char>(is_huge ? 0xFF >> any(3) : any(256));
    }
    mend_checksums(file);
    return file;
}

/// As a render does it. Whether there were pixels.
bool look_at(const KIVString& path, bool at_16_bits)
{
    BitmapProvider provider(at_16_bits ? 16 : 8);
    const int id = provider.new_image_id(path);
    MipMap* mip = provider.lock(id);
    bool has_pixels = false;
    if (mip->usable && mip->inq_tiled()) {
        Vector2 corners[4] = {{0.1, 0.9}, {0.6, 0.9}, {0.6, 0.2}, {0.1, 0.2}};
        const std::unique_ptr<KIVPixmap> part(mip->new_region_pixmap(corners, 50, 50));
        has_pixels = part != nullptr;
    }
    has_pixels = mip->inq_pixmap(mip->width / 3, mip->height / 3) || has_pixels;
    provider.unlock(id);
    return has_pixels;
}

/// What a child leaves behind.
struct Notes {
    int number = 0; // of the file in hand
    int refused[N_DAMAGES] = {};
    int read[N_DAMAGES] = {};
};

void limit_memory()
{
#ifndef __SANITIZE_ADDRESS__ // which takes terabytes of addresses
    long pages = 0;
    if (std::FILE* sizes = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(sizes, "%ld", &pages) != 1)
            std::abort();
        std::fclose(sizes);
    }
    const rlim_t most = static_cast<rlim_t>(pages * ::sysconf(_SC_PAGESIZE)) + MOST_MEMORY;
    const rlimit limit = {most, most};
    ::setrlimit(RLIMIT_AS, &limit);
#endif
}

void read_damaged_files(const TempFolder& folder, const std::string& whole, Notes& notes)
{
    limit_memory();
    std::minstd_rand random(1);
    for (notes.number = 0; notes.number < FILE_COUNT; ++notes.number) {
        const auto kind = static_cast<Damage>(notes.number % N_DAMAGES);
        folder.write("damaged", damage(whole, kind, random));
        ::alarm(LONGEST);
        ++(look_at(folder.path("damaged"), random() % 2 == 0) ? notes.read : notes.refused)[kind];
    }
}

/// A picture of every format, by its file's name. The files lie in memory, where that can be had.
class DamagedFiles : public testing::TestWithParam<const char*> {
protected:
    static void SetUpTestSuite()
    {
        if (::access("/dev/shm", W_OK) == 0)
            ::setenv("TMPDIR", "/dev/shm", 1);
    }

    void SetUp() override
    {
        const auto picture = make_soft_patch(120, 90, PT_RGBA_8);
        const char* writer = has_suffix(".tga") ? "TargaWriter" : "TiffWriter";
        auto* record = ClassManager::inq_main()->find_cd_for(writer);
        const std::unique_ptr<KIVPixmapWriter> tiff(
            static_cast<KIVPixmapWriterDescriptor*>(record)->new_writer(1));
        const std::string source = has_suffix(".tga") ? GetParam() : "source.tif";
        tiff->write_pixmap(folder.path(source), picture.get());
        if (has_suffix("tiles.tif"))
            make_large_in_tiles();
        else if (source != GetParam())
            convert(source);
        whole = folder.read(GetParam());
    }

    static bool has_suffix(const char* suffix) { return std::string(GetParam()).ends_with(suffix); }

    /// By other software, with what the name tells.
    void convert(const std::string& source)
    {
        const std::string name = GetParam();
        const std::string options = name == "a.text.ppm"     ? " -compress none"
                                    : name == "a.lzw.tif"    ? " -compress lzw -depth 16"
                                    : name == "a.plane.tif"  ? " -interlace plane -compress none"
                                    : name == "a.plain.tif"  ? " -compress none -depth 8"
                                    : name == "a.scans.jpg"  ? " -interlace plane"
                                    : name == "a.passes.png" ? " -interlace plane -depth 16"
                                                             : "";
        const KIVString command = KIVString("convert ") + folder.path(source) +
                                  KIVString(options.c_str()) + " " + folder.path(name);
        ASSERT_EQ(std::system(command.c_str()), 0);
    }

    void make_large_in_tiles()
    {
        folder.write("large.pgm", "P5 700 300 255\n" + std::string(700 * 300, 'a'));
        KIVString error;
        ASSERT_TRUE(make_tiled_image(folder.path("large.pgm"), folder.path(GetParam()), error));
    }

    TempFolder folder;
    std::string whole;
};
} // namespace

TEST(PngInput, looks_at_nothing_behind_the_end_of_the_file)
{
    std::string memory("\x89PNG\r\n\x1A\n\0\0\0\0IDAT", 16);
    memory.append(64, '\0');
    PngInput input(Bytes(reinterpret_cast<const unsigned char*>(memory.data()), 16));
    unsigned char bytes[8];
    EXPECT_EQ(input.read(bytes, sizeof(bytes)), nullptr);
    EXPECT_EQ(input.read(bytes, sizeof(bytes)), nullptr);
    EXPECT_FALSE(input.has_stored_samples());
}

TEST(RowLayout, counts_the_bits_of_what_a_damaged_file_claims)
{
    EXPECT_EQ((RowLayout{0xFFFF, 0xFFFF, Alpha::NONE}.inq_bits()), 0xFFFE0001U);
}

TEST_P(DamagedFiles, are_read_or_refused_in_little_memory_and_time)
{
    folder.write("whole", whole);
    ASSERT_TRUE(look_at(folder.path("whole"), true));
    auto* notes = new (::mmap(nullptr, sizeof(Notes), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Notes;
    const pid_t child = ::fork();
    if (child == 0) {
        read_damaged_files(folder, whole, *notes);
        std::_Exit(EXIT_SUCCESS);
    }
    int status = 0;
    rusage usage = {};
    ::wait4(child, &status, 0, &usage);
    EXPECT_EQ(status, 0) << "file " << notes->number;
    EXPECT_EQ(notes->number, FILE_COUNT);
    EXPECT_EQ(notes->read[CUT], 0);
    EXPECT_GT(notes->refused[WRONG_SIZES], 0);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT(static_cast<std::size_t>(usage.ru_maxrss) << 10, MOST_MEMORY);
#endif
    std::cout << GetParam() << ": " << whole.size()
              << " bytes; read of cut, flipped, wrong in size: " << notes->read[CUT] << ' '
              << notes->read[FLIPPED] << ' ' << notes->read[WRONG_SIZES] << "; "
              << (usage.ru_maxrss >> 10) << " MB\n";
    ::munmap(notes, sizeof(Notes));
}

INSTANTIATE_TEST_SUITE_P(Formats, DamagedFiles,
                         testing::Values("source.tif", "a.lzw.tif", "a.plane.tif", "a.plain.tif",
                                         "tiles.tif", "a.png", "a.passes.png", "a.jpg",
                                         "a.scans.jpg", "a.gif", "a.tga", "a.ppm", "a.text.ppm"),
                         [](const auto& test) {
                             std::string name = test.param;
                             std::ranges::replace(name, '.', '_');
                             return name;
                         });
