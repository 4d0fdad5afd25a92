#pragma once

#include "compositor/affine/lib/hdr/CNodeCamera.h"
#include "compositor/affine/lib/hdr/CNodeTranslate.h"
#include "compositor/imagelib/lib/hdr/CNodeRostrum.h"
#include "compositor/imagelib/lib/hdr/CNodeScreen.h"
#include "compositor/lib/hdr/CNodeChannelSet.h"
#include "compositor/lib/hdr/CNodeGraph.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/move/hdr/MoveColumn.h"
#include "xsheet/numeric/hdr/NumericCellData.h"
#include "xsheet/numeric/hdr/NumericSubColumn.h"

#include <memory>

// Scenes built in code.

using Scene = std::unique_ptr<KIVScene>;

inline Scene load(const KIVString& folder)
{
    return Scene(KIVScene::load_from_file(folder, nullptr, false));
}

template <class Node> Node* add_node(KIVScene& scene)
{
    auto* node = new Node;
    node->init();
    node->add_to_graph(scene.inq_graph());
    return node;
}

inline void connect(KIVScene& scene, CNode* from, CNode* to)
{
    scene.inq_graph()->make_connection(from->inq_outputs()->inq_channel(0),
                                       to->inq_inputs()->inq_channel(0), false);
}

inline KeyCell* set_key(SubColumn* column, int frame, std::initializer_list<double> values)
{
    KeyCell* key = column->make_key(frame);
    int i = 0;
    for (const double value : values)
        static_cast<BaseNumericCellData*>(key->inq_data())->set_element(i++, value);
    key->set_mode(IM_INBETWEEN);
    return key;
}

/// A colour card that goes from black over grey at frame 20 to white at 40, seen by a camera.
struct FadingCard {
    FadingCard() : scene(KIVScene::inq_unsetup_scene())
    {
        scene->inq_xsheet()->set_length(40);
        output = add_node<CNodeRostrum>(*scene);
        camera = add_node<CNodeCamera>(*scene);
        card = add_node<CNodeScreen>(*scene);
        scene->inq_graph()->set_root_node(output);
        connect(*scene, camera, output);
        connect(*scene, card, camera);
        set_key(inq_colour(), 1, {0.0, 0.0, 0.0});
        middle = set_key(inq_colour(), 20, {0.5, 0.5, 0.5});
        set_key(inq_colour(), 40, {1.0, 1.0, 1.0});
    }

    SubColumn* inq_colour() const { return card->inq_subcolumn(); }

    Scene scene;
    CNodeRostrum* output;
    CNodeCamera* camera;
    CNodeScreen* card;
    KeyCell* middle;
};
