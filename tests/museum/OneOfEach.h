#pragma once

#include "compositor/affine/lib/hdr/CNodeRotate.h"
#include "compositor/affine/lib/hdr/CNodeTransform.h"
#include "compositor/imagelib/lib/hdr/CNodeGroup.h"
#include "compositor/imagelib/lib/hdr/CNodeRasterImage.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalMacro.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalReceiver.h"
#include "compositor/imagelib/lib/hdr/CNodeUniversalTransmitter.h"
#include "coversheet/lib/hdr/CoverSheet.h"
#include "curveslib/hdr/SquidgeSet.h"
#include "kivlib/hdr/KIVColour.h"
#include "scene/hdr/KIVAssetManager.h"
#include "tests/museum/Museum.h"
#include "xsheet/move/hdr/PathKeyCell.h"
#include "xsheet/move/hdr/PathNumericColumnPolicy.h"
#include "xsheet/move/hdr/PathSubColumn.h"
#include "xsheet/numeric/hdr/AngleSubColumn.h"
#include "xsheet/numeric/hdr/NumericKeyCell.h"
#include "xsheet/ratio/hdr/RatioKeyCellData.h"
#include "xsheet/sequence/hdr/FrameNumberColumn.h"
#include "xsheet/sequence/hdr/NotesSubColumn.h"
#include "xsheet/sequence/hdr/RasterSeqCellData.h"
#include "xsheet/sequence/hdr/ScribbleLine.h"
#include "xsheet/sequence/hdr/TextCellSubColumn.h"

/// A scene of four frames with something of all that the files of a scene hold.
class OneOfEach {
public:
    /// Stands in sheet, cover sheet and graph.
    static constexpr double MARK = 0.671875;

    OneOfEach() : scene(KIVScene::inq_unsetup_scene())
    {
        scene->inq_xsheet()->set_length(4);
        build_graph();
        add_texts();
        add_path();
        auto* numbers = new FrameNumberColumn;
        numbers->init_after_construction();
        scene->inq_xsheet()->add_column(numbers, nullptr);
        scene->inq_asset_manager()->create_and_add_asset("/art/step.wav", SOUND_ASSET);
        scene->inq_cover_sheet()->set_string("Late Show", 1);
        scene->inq_cover_sheet()->set_approval(true, 3);
        scene->inq_cover_sheet()->set_start_trim_frames(1);
        scene->inq_cover_sheet()->set_aspect_ratio(MARK);
    }

    Scene scene;

private:
    void build_graph()
    {
        auto* output = add_node<CNodeRostrum>(*scene);
        auto* camera = add_node<CNodeCamera>(*scene);
        auto* turn = add_node<CNodeRotate>(*scene);
        auto* transmitter = add_node<CNodeUniversalTransmitter>(*scene);
        auto* receiver = add_node<CNodeUniversalReceiver>(*scene);
        auto* place = add_node<CNodeTransform>(*scene);
        auto* card = add_node<CNodeScreen>(*scene);
        auto* picture = new CNodeRasterImage(KIVString("/art/walk.tif"), nullptr);
        picture->init();
        picture->add_to_graph(scene->inq_graph());
        scene->inq_graph()->set_root_node(output);
        connect(*scene, camera, output);
        connect(*scene, receiver, camera);
        connect(*scene, transmitter, receiver);
        connect(*scene, turn, transmitter);
        connect(*scene, place, camera);
        connect(*scene, card, turn);
        connect(*scene, picture, place);
        add_node<CNodeUniversalMacro>(*scene)->add_node(turn);
        turn->add_to_group(add_node<CNodeGroup>(*scene));
        set_key(card->inq_subcolumn(), 1, {0.0, MARK, 0.0});
        card->set_position({MARK, 0.0});
        set_key(card->inq_subcolumn(), 3, {0.5, 0.5, 1.0});
        auto* picture_key = picture->inq_subcolumn()->inq_first_key();
        static_cast<RasterSeqCellData*>(picture_key->inq_data())->set_file_name("/art/walk.tif");
        follow(*turn->inq_subcolumn(), *add_column(new AngleSubColumn));
    }

    /// A column of its own for the sub-column.
    template <class Member> Member* add_column(Member* member)
    {
        auto* column = new Column;
        column->init_after_construction();
        scene->inq_xsheet()->add_column(column, nullptr);
        member->init_after_construction();
        column->add_sub_column(member, nullptr);
        return member;
    }

    static void follow(SubColumn& follower, NumericSubColumn& source)
    {
        set_key(&source, 2, {30.0});
        auto* key = static_cast<NumericKeyCell*>(set_key(&follower, 2, {10.0}));
        key->set_is_ratioed(true);
        key->inq_ratio_data()->set_source_column(&source);
    }

    void add_texts()
    {
        auto* line = new ScribbleLine(KIVColour(0.5, 0.25, 0.0));
        line->add_point(Vector2(1.0, 5.0));
        line->add_point(Vector2(-2.0, 7.0));
        auto* notes = add_column(new NotesSubColumn);
        notes->make_key(2)->inq_data()->set_string("slower");
        notes->add_scribble(line);
        add_column(new TextCellSubColumn)->make_key(3)->inq_data()->set_string("hello");
    }

    void add_path()
    {
        auto* set = new SquidgeSet;
        Squidge* curve = set->add_squidge(new Squidge(false));
        for (unsigned long label = 1; label <= 2; ++label) {
            curve->add_knot({100.0 * static_cast<double>(label), 0.0}, {-5.0, 1.0}, {5.0, -1.0});
            curve->add_bead({curve->inq_knots().back().get(), 0.0}, label);
        }
        auto* path = add_column(new PathSubColumn);
        path->inq_path_policy()->set_squidges(set);
        for (int bead = 1; bead <= 2; ++bead) {
            auto* key = static_cast<PathKeyCell*>(path->create_new_key());
            key->set_data(key->create_data());
            key->set_bead_label(static_cast<unsigned long>(bead));
            path->insert_key(key, 2 * bead);
            key->key_changed();
            path->inq_path_policy()->added_key(key);
        }
    }
};
