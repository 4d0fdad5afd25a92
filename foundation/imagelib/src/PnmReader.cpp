#include "imagelib/src/PictureReader.h"

namespace {
constexpr std::uint16_t MOST_LEVELS = 0xFFFF;
constexpr const char* TOO_SHORT = "the PNM file ends too early, or is damaged";

/// The six portable formats: bits, greys and colours, as text or as bytes.
class PnmReader : public PictureReader {
public:
    PnmReader(Bytes file, int kind) : file(file), kind(kind) {}

    bool read_head(PictureInfo& info) override;
    std::uint64_t inq_most_pixels(std::uint64_t file_bytes) const override;
    bool read_pixels(RowTarget& target) override;

private:
    bool is_text() const { return kind <= 3; }
    bool is_plain() const { return levels == 0xFF && !is_text() && !is_bits(); }
    bool is_bits() const { return kind == 1 || kind == 4; }
    int inq_samples() const { return kind == 3 || kind == 6 ? 3 : 1; }

    void skip_blanks();
    bool read_number(int& number);
    bool read_bit(int& bit);
    bool read_sample(int& sample);
    bool read_row(std::vector<std::uint16_t>& row);
    bool read_packed_row(std::vector<std::uint16_t>& row);
    bool put_plain_rows(RowTarget& target);

    Bytes file;
    int kind;
    std::size_t position = 2;
    int width = 0;
    int height = 0;
    int levels = 1;
};

bool is_blank(unsigned char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

void PnmReader::skip_blanks()
{
    bool in_comment = false;
    for (; position < file.size(); ++position) {
        const unsigned char c = file[position];
        in_comment = in_comment ? c != '\n' : c == '#';
        if (!in_comment && !is_blank(c))
            return;
    }
}

bool PnmReader::read_number(int& number)
{
    constexpr int MOST = 100000000;
    skip_blanks();
    const std::size_t start = position;
    number = 0;
    for (; position < file.size() && file[position] >= '0' && file[position] <= '9'; ++position) {
        number = number * 10 + (file[position] - '0');
        if (number > MOST)
            return false;
    }
    return position > start;
}

bool PnmReader::read_head(PictureInfo& info)
{
    const bool is_okay = read_number(info.width) && read_number(info.height) &&
                         (is_bits() || read_number(levels)) && position < file.size() &&
                         is_blank(file[position]);
    if (!is_okay || levels < 1 || levels > MOST_LEVELS)
        return fail("the head of the PNM file is damaged");
    ++position;
    width = info.width;
    height = info.height;
    info.bits = levels > 0xFF ? 16 : 8;
    return true;
}

/// Numbers of a text have blanks between them, or behind the last the end.
std::uint64_t PnmReader::inq_most_pixels(std::uint64_t file_bytes) const
{
    if (is_bits())
        return is_text() ? file_bytes : 8 * file_bytes;
    const std::uint64_t sample_bytes = is_text() || levels > 0xFF ? 2 : 1;
    return (file_bytes + 1) / (sample_bytes * static_cast<std::uint64_t>(inq_samples()));
}

/// Digits of bits need no blanks between them.
bool PnmReader::read_bit(int& bit)
{
    skip_blanks();
    if (position >= file.size() || (file[position] != '0' && file[position] != '1'))
        return false;
    bit = file[position++] == '0' ? 1 : 0; // 1 is black
    return true;
}

bool PnmReader::read_sample(int& sample)
{
    if (is_text())
        return is_bits() ? read_bit(sample) : read_number(sample);
    const std::size_t bytes = levels > 0xFF ? 2 : 1;
    if (file.size() - position < bytes)
        return false;
    sample = file[position];
    if (bytes == 2)
        sample = sample << 8 | file[position + 1];
    position += bytes;
    return true;
}

bool PnmReader::read_packed_row(std::vector<std::uint16_t>& row)
{
    const std::size_t bytes = (row.size() + 7) / 8;
    if (file.size() - position < bytes)
        return false;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const bool is_black = (file[position + i / 8] >> (7 - i % 8) & 1) != 0;
        row[i] = is_black ? 0 : MOST_LEVELS;
    }
    position += bytes;
    return true;
}

bool PnmReader::read_row(std::vector<std::uint16_t>& row)
{
    if (is_bits() && !is_text())
        return read_packed_row(row);
    for (std::uint16_t& out : row) {
        int sample = 0;
        if (!read_sample(sample))
            return false;
        const auto most = static_cast<std::uint32_t>(levels);
        const auto level = static_cast<std::uint32_t>(std::min(sample, levels));
        out = static_cast<std::uint16_t>((level * MOST_LEVELS + most / 2) / most);
    }
    return true;
}

/// As they lie in the file.
bool PnmReader::put_plain_rows(RowTarget& target)
{
    const RowLayout layout = {inq_samples(), 8, Alpha::NONE};
    const std::size_t bytes = layout.inq_bytes() * static_cast<std::size_t>(width);
    for (int y = 0; y < height; ++y, position += bytes) {
        if (file.size() - position < bytes)
            return fail(TOO_SHORT);
        if (!target.put_row(y, file.data() + position, layout))
            return fail_by_target();
    }
    return true;
}

bool PnmReader::read_pixels(RowTarget& target)
{
    if (is_plain())
        return put_plain_rows(target);
    const int samples = inq_samples();
    std::vector<std::uint16_t> row(static_cast<std::size_t>(width) *
                                   static_cast<std::size_t>(samples));
    for (int y = 0; y < height; ++y) {
        if (!read_row(row))
            return fail(TOO_SHORT);
        if (!target.put_row(y, row.data(), {samples, 16, Alpha::NONE}))
            return fail_by_target();
    }
    return true;
}
} // namespace

std::unique_ptr<PictureReader> make_pnm_reader(Bytes file)
{
    const bool is_pnm = file.size() >= 3 && file[0] == 'P' && file[1] >= '1' && file[1] <= '6' &&
                        (is_blank(file[2]) || file[2] == '#');
    return is_pnm ? std::make_unique<PnmReader>(file, file[1] - '0') : nullptr;
}
