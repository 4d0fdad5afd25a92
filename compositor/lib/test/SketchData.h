#pragma once

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "kivlib/hdr/IntArray.h"

#include <memory>
#include <string>

/// Data that say in words where they come from: "tint(ball+sky)".
class SketchData : public CData {
public:
    explicit SketchData(int type) : type(type) {}
    template <int TYPE> static CData* new_data() { return new SketchData(TYPE); }

    CDataDescriptor* inq_desc() const override { return CDataDescriptor::find_desc_for(type); }
    int inq_type() const override { return type; }
    int inq_frameno() const override { return 1; }

    using CData::union_generated_data_from;
    using CData::union_immediate_data_from;
    void union_immediate_data_from(CNodeOpArray*, AbortPanel*) override {}
    void union_generated_data_from(CNodeOpArray* inputs, AbortPanel*) override
    {
        const std::unique_ptr<IntArray> order(sort_input_order(inputs));
        for (int i = 0; i < order->size(); ++i)
            generated +=
                (i > 0 ? "+" : "") + of(inputs->inq_data(order->inq_element(i)))->generated;
    }
    void copy_generated_data_to(CData* consumer, AbortPanel*) override
    {
        of(consumer)->generated = generated;
    }
    void clear_generated_data() override { generated.clear(); }

    static SketchData* of(CData* data) { return static_cast<SketchData*>(data); }

    std::string generated;

private:
    int type;
};
