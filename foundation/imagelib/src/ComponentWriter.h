#pragma once

#include "imagelib/hdr/KIVPixmapWriter.h"

#include <array>

/// What a component of television is made of: shares of red, green and blue, each from 0 to 1.
using ComponentShares = std::array<double, 3>;

/// Luma, and the two colour components that share a pair of pixels.
struct ComponentMatrix {
    ComponentShares luma;
    ComponentShares first;
    ComponentShares second;
};

/// Writes bare frames of television: for each pair of pixels the first colour component, luma, the
/// second colour component and luma again, row by row from the top, in eight bits. Variant 0 has
/// 720 by 576 pixels for 625 lines, variant 1 720 by 486 for 525.
class ComponentWriter : public KIVPixmapWriter {
public:
    /// The matrix outlives the writer. Null for another variant.
    static gsl::owner<KIVPixmapWriter*> new_writer(const ComponentMatrix& matrix,
                                                   const char* extension, int variant);

protected:
    WriteError encode(const KIVPixmap& pixmap, ByteBuffer& contents) override;
    const char* inq_extension() const override { return extension; }
    bool is_whole(const WrittenFile& file, const PictureForm& form) const override;

private:
    struct Standard {
        int width;
        int height;
        double pixel_aspect;
    };
    static constexpr std::array<Standard, 2> STANDARDS{{{720, 576, 16.0 / 15}, {720, 486, 0.9}}};

    ComponentWriter(const ComponentMatrix& matrix, const char* extension, const Standard& standard)
        : matrix(matrix), extension(extension), standard(standard)
    {}

    /// The whole picture as large as it can be shown, in the middle of a black frame.
    bool fit(KIVPixmap& frame, const KIVPixmap& pixmap) const;
    void put_rows(unsigned char* to, const KIVPixmap& frame) const;
    std::size_t inq_file_bytes() const;

    const ComponentMatrix& matrix;
    const char* extension;
    const Standard& standard;
};
