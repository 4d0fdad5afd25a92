#pragma once

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataDescriptor.h"

/// Data without contents.
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
    void union_generated_data_from(CNodeOpArray*, AbortPanel*) override {}

private:
    int type;
};
