#include "compositor/lib/hdr/DataType.h"
#include "effects/hdr/CNodeGaussianBlur.h"
#include "effects/hdr/CNodeLevels.h"
#include "effects/hdr/CNodeMatte.h"

namespace {
constexpr int FILTERS = 20;
constexpr NodeFamily FILTER = {
    .catagory = FILTERS, .n_inputs = 1, .n_outputs = 1, .type = IMAGE_TYPE};
constexpr NodeFamily MIXER = {
    .catagory = FILTERS, .n_inputs = 2, .n_outputs = 1, .type = IMAGE_TYPE};

constexpr NodeRow FILTER_NODES[] = {
    node_row<CNodeGaussianBlur>("Blur", -1),
    node_row<CNodeLevels>("Levels", -1),
};
constexpr NodeRow MIXER_NODES[] = {node_row<CNodeMatte>("Matte", -1)};

/// Registers the effects.
class EffectsDLLInitialiser : public NodeInitialiser {
public:
    explicit EffectsDLLInitialiser(ClassManager* manager)
    {
        init();
        setup(manager);
    }

private:
    void init()
    {
        add_nodes(FILTER, FILTER_NODES);
        add_nodes(MIXER, MIXER_NODES);
    }
};
} // namespace

KIV_MODULE(EffectsDLLInitialiser);
