#pragma once

#include "compositor/imagelib/lib/hdr/CDataImage.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "render/hdr/RenderScene.h"
#include "tests/museum/Museum.h"
#include "tests/support/TempFolder.h"
#include "xsheet/colour/hdr/ColourKeyCell.h"
#include "xsheet/colour/hdr/ColourSubColumn.h"

#include <algorithm>
#include <cmath>

/// Nothing is drawn through it: what feeds it makes a picture of its own.
class Wall : public CNodeRostrum {
public:
    gsl::owner<CNodeOp*> new_nodeop(int) override { return new Op(this); }

    static inline unsigned n_pictures = 0; // that walls were handed

private:
    class Op : public CNodeOp {
    public:
        using CNodeOp::CNodeOp;
        void generate_data(AbortPanel* abort) override
        {
            CNodeOp::generate_data(abort);
            CDataImage* image = CDataImage::from(inq_node_data());
            KIVPixmap* picture = image->extract_pixmap();
            n_pictures += picture ? 1 : 0;
            image->set_generated_data(picture);
        }
    };
};

/// A scene of layers under its output, and the folder of their pictures.
class Stack {
public:
    enum class Path { DIRECT, MERGING };

    explicit Stack(Path path = Path::DIRECT) : path(path)
    {
        scene->inq_graph()->set_root_node(output);
    }

    /// Puts a node below all that feeds `consumer`. On the merging path a wall stands between.
    template <class Node> Node* put(Node* node, CNode* consumer)
    {
        enter(node);
        if (path == Path::MERGING)
            consumer = put_below(enter(new Wall), consumer);
        put_below(node, consumer);
        return node;
    }

    CNodeScreen* put_card(CNode* consumer, const KIVColour& colour)
    {
        auto* card = new CNodeScreen;
        KeyCell* key = card->inq_colour_subcolumn()->make_key(1);
        static_cast<ColourCellData*>(key->inq_data())->set_colour(colour);
        return put(card, consumer);
    }

    CNodeRasterImage* put_picture(CNode* consumer, const KIVString& file)
    {
        return put(new CNodeRasterImage(file, nullptr), consumer);
    }

    /// Frame 1 with alpha.
    std::unique_ptr<KIVPixmap> render(int width, int height, int bits = 8, int quality = 0) const
    {
        RenderScene renderer(scene.get(), width, height, 1.0, quality, 0, bits, 0);
        renderer.set_is_rgba(true);
        renderer.set_background_colour(KIVColour(0.0, 0.0, 0.0, 0.0));
        renderer.set_camera_view();
        return std::unique_ptr<KIVPixmap>(renderer.render_frame(1, nullptr));
    }

    Scene scene{KIVScene::inq_unsetup_scene()};
    CNodeRostrum* output = enter(new CNodeRostrum);

private:
    template <class Node> Node* enter(Node* node)
    {
        node->init();
        node->add_to_graph(scene->inq_graph());
        return node;
    }

    CNode* put_below(CNode* node, CNode* consumer)
    {
        constexpr int BELOW_ALL = 1 << 20;
        scene->inq_graph()->make_connection(node->inq_outputs()->inq_channel(0), BELOW_ALL,
                                            consumer->inq_inputs()->inq_channel(0), BELOW_ALL,
                                            false);
        return node;
    }

    Path path;
};

/// How much of a cel is painted, `away` from its middle. Four kinds: to its edges, a disc, glass,
/// and one that fades away all over.
inline double cover_of_cel(double away, int kind)
{
    switch (kind % 4) {
    case 0:
        return 1.0;
    case 1:
        return std::clamp(20.0 * (0.45 - away), 0.0, 1.0);
    case 2:
        return std::clamp(20.0 * (0.45 - away), 0.0, 0.5);
    default:
        return std::clamp(2.0 * (0.5 - away), 0.0, 1.0);
    }
}

inline void write_cel(const KIVString& file, int width, int height, int kind)
{
    KIVPixmap cel(width, height, PT_RGBA_8, nullptr, false);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double away = std::hypot((x + 0.5) / width - 0.5, (y + 0.5) / height - 0.5);
            const double cover = cover_of_cel(away, kind);
            unsigned char* pixel = cel.inq_row(y) + 4 * x;
            for (int c = 0; c < 3; ++c)
                pixel[c] = static_cast<unsigned char>(
                    cover * (127.5 + 127.0 * std::sin(0.11 * x * (c + 1) + 0.2 * y + kind)));
            pixel[3] = static_cast<unsigned char>(std::lround(255.0 * cover));
        }
    const ClassDescriptor* tiff = ClassManager::inq_main()->find_cd_for("TiffWriter");
    const std::unique_ptr<KIVPixmapWriter> writer(
        static_cast<const KIVPixmapWriterDescriptor*>(tiff)->new_writer(0));
    writer->write_pixmap(file, &cel);
}
