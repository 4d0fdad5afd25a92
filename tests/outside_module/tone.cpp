#include <montaray/montaraystore.h>

// A module with a type of data of its own, the tone: one grey for the whole picture. Its nodes are
// a source and an inverter; a tone that comes to where a picture is wanted fills it.

namespace {
constexpr int TONE_TYPE = 9001; // nobody else's number

class CDataTone : public CDataRender {
public:
    static CDataDescriptor* inq_desc_s();
    CDataDescriptor* inq_desc() const override { return inq_desc_s(); }
    int inq_type() const override { return TONE_TYPE; }

    void copy_generated_data_to(CData* consumer, AbortPanel*) override
    {
        static_cast<CDataTone*>(consumer)->tone = tone;
    }

    double tone = 0.0; // from black, 0, to white, 1
};

CData* new_tone()
{
    return new CDataTone;
}

CDataDescriptor* CDataTone::inq_desc_s()
{
    constexpr bool CAN_UNION = false;
    constexpr bool CAN_ORDER = false;
    static auto* const descriptor = new CDataDescriptor("CDataTone", "Tone", TONE_TYPE, new_tone,
                                                        CAN_UNION, nullptr, CAN_ORDER);
    return descriptor;
}

/// From an op's tone to the picture that its consumer wants.
class ToneToImage : public CDataConvertor {
public:
    using CDataConvertor::CDataConvertor;

    void convert_request(CData* tone, CData* image) override
    {
        tone->copy_request_data_from(image);
    }
    void convert_immediate(CData* tone, CData* image) override
    {
        tone->copy_immediate_data_to(image);
    }
    void convert_change(CData* tone, CData* image) override { tone->copy_change_data_to(image); }

    void convert_generated(CData* tone, CData* image, AbortPanel*) override
    {
        auto* picture = static_cast<CDataImage*>(image);
        if (picture->inq_image_ibbox_v().inq_is_empty())
            return;
        delete picture->extract_pixmap();
        picture->create_pixmap(KIVColour(static_cast<CDataTone*>(tone)->tone),
                               picture->inq_is_16_bps() ? PT_RGBA_16 : PT_RGBA_8);
    }
};

class ToneToImageDescriptor : public CDataConvertorDescriptor {
public:
    ToneToImageDescriptor() : CDataConvertorDescriptor(TONE_TYPE, CDataImage::inq_type_s()) {}
    gsl::owner<CDataConvertor*> new_convertor(CNodeOp* owner) override
    {
        return new ToneToImage(owner);
    }
};
} // namespace

/// The tone that is keyed in the sheet, beside remarks on it.
class CNodeTone : public DWNode {
    KIV_NODE(CNodeTone, DWNode);

public:
    CNodeTone()
    {
        init_subcolumn(new NumericSubColumn, "Tone");
        add_subcolumn(2, new TextCellSubColumn, "Remark");
    }
    explicit CNodeTone(KIVIStream& stream) : DWNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int) override;

    double inq_tone(int frame) const
    {
        auto* tones = object_cast<NumericSubColumn>(inq_subcolumn());
        return tones ? tones->inq_element(0, frame) : 0.0;
    }
};

/// Black for white.
class CNodeToneInvert : public DWNode {
    KIV_NODE(CNodeToneInvert, DWNode);

public:
    CNodeToneInvert() = default;
    explicit CNodeToneInvert(KIVIStream& stream) : DWNode(stream) {}

    gsl::owner<CNodeOp*> new_nodeop(int) override;
};

namespace {
class ToneOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    void copy_node_info(CNode* node) override
    {
        tone = static_cast<CNodeTone*>(node)->inq_tone(inq_node_data()->inq_frameno());
    }
    void init_data(AbortPanel*) override
    {
        static_cast<CDataTone*>(inq_node_data())->set_opaque(true);
    }
    void generate_data(AbortPanel*) override
    {
        static_cast<CDataTone*>(inq_node_data())->tone = tone;
    }

private:
    double tone = 0.0;
};

class ToneInvertOp : public CNodeOp {
public:
    using CNodeOp::CNodeOp;

    void generate_data(AbortPanel* abort) override
    {
        CNodeOp::generate_data(abort); // the input's tone
        auto* data = static_cast<CDataTone*>(inq_node_data());
        data->tone = 1.0 - data->tone;
    }
};

CNodeOp* new_transform_op(CNode* node)
{
    return new CNodeAffineTransformOp(node);
}

constexpr NodeFamily SOURCE = {.catagory = 30, .n_inputs = 0, .n_outputs = 1, .type = TONE_TYPE};
constexpr NodeFamily FILTER = {.catagory = 20, .n_inputs = 1, .n_outputs = 1, .type = TONE_TYPE};
constexpr NodeRow SOURCES[] = {node_row<CNodeTone>("Tone", -1)};
constexpr NodeRow FILTERS[] = {node_row<CNodeToneInvert>("Invert Tone", -1)};

class ToneInitialiser : public NodeInitialiser {
public:
    explicit ToneInitialiser(ClassManager* manager)
    {
        init();
        setup(manager);
    }

private:
    void init()
    {
        CDataTone::inq_desc_s();
        new ToneToImageDescriptor; // the node repository keeps it
        add_nodes(SOURCE, SOURCES);
        add_nodes(FILTER, FILTERS);
        add(new CNodeGenericOpDescriptor("CNodeToneTransformOp", "CNodeGenericOp", nullptr, -1,
                                         nullptr, "CNodeTransform", TONE_TYPE, new_transform_op));
    }
};
} // namespace

CNodeOp* CNodeTone::new_nodeop(int)
{
    return new ToneOp(this);
}

CNodeOp* CNodeToneInvert::new_nodeop(int)
{
    return new ToneInvertOp(this);
}

KIV_MODULE(ToneInitialiser);
