#pragma once

#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNode.h"
#include "compositor/lib/hdr/CNodeDescriptor.h"
#include "compositor/lib/hdr/CNodeGenericOpDescriptor.h"
#include "compositor/lib/hdr/CNodeOp.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "kivlib/hdr/IntArray.h"
#include "tests/graph_model/GraphModel.h"
#include "tests/graph_model/Trace.h"

#include <memory>

// Nodes, ops, data and convertors of the library's kinds, which tell `our_trace` what they do.

inline Trace our_trace;
inline std::vector<const CNodeOp*> our_ops; // of an evaluation, in the order in which they are made

/// Whatever type it has, its facts are united and handed on in the same way.
class TracedData : public CData {
public:
    explicit TracedData(int type) : type(type) {}
    template <int TYPE> static CData* new_data() { return new TracedData(TYPE); }
    static Facts* facts_of(CData* data)
    {
        return data ? &static_cast<TracedData*>(data)->facts : nullptr;
    }

    CDataDescriptor* inq_desc() const override { return CDataDescriptor::find_desc_for(type); }
    int inq_type() const override { return type; }
    int inq_frameno() const override { return 1; }

    using CData::union_generated_data_from;
    using CData::union_immediate_data_from;
    void union_immediate_data_from(CNodeOpArray* inputs, AbortPanel*) override
    {
        unite(*inputs, &Facts::immediate);
    }
    void union_generated_data_from(CNodeOpArray* inputs, AbortPanel*) override
    {
        unite(*inputs, &Facts::generated);
    }
    void union_immediate_data_from(CData* input, AbortPanel*) override
    {
        facts.immediate = mix(facts.immediate, facts_of(input)->immediate);
    }
    void union_generated_data_from(CData* input, AbortPanel*) override
    {
        facts.generated = mix(facts.generated, facts_of(input)->generated);
    }
    void copy_request_data_from(CData* to) override { facts.request = facts_of(to)->request; }
    void copy_immediate_data_to(CData* to) override { facts_of(to)->immediate = facts.immediate; }
    void copy_generated_data_to(CData* to, AbortPanel*) override
    {
        facts_of(to)->generated = facts.generated;
    }
    void clear_immediate_data() override { facts.immediate = 0; }
    void clear_generated_data() override { facts.generated = 0; }

private:
    void unite(CNodeOpArray& inputs, std::uint64_t Facts::*member)
    {
        const std::unique_ptr<IntArray> order(sort_input_order(&inputs));
        for (int i = 0; i < order->size(); ++i)
            if (const Facts* input = facts_of(inputs.inq_data(order->inq_element(i))))
                facts.*member = mix(facts.*member, input->*member);
    }

    int type;
    Facts facts;
};

class TracedConvertor : public CDataConvertor {
public:
    using CDataConvertor::CDataConvertor;

    void convert_request(CData* own, CData* converted) override
    {
        of(own).request = mix(of(converted).request, 77);
    }
    void convert_immediate(CData* own, CData* converted) override
    {
        of(converted).immediate = mix(of(own).immediate, 78);
    }
    void convert_generated(CData* own, CData* converted, AbortPanel*) override
    {
        of(converted).generated = mix(of(own).generated, 79);
    }
    void convert_change(CData*, CData*) override {}

private:
    static Facts& of(CData* data) { return *TracedData::facts_of(data); }
};

class TracedConvertorDescriptor : public CDataConvertorDescriptor {
public:
    using CDataConvertorDescriptor::CDataConvertorDescriptor;
    gsl::owner<CDataConvertor*> new_convertor(CNodeOp* owner) override
    {
        return new TracedConvertor(owner);
    }
};

class TracedOp : public CNodeOp {
public:
    TracedOp(CNode* node, const GraphModel::Manner& manner)
        : CNodeOp(node), manner(manner), serial(int(our_ops.size()))
    {
        our_ops.push_back(this);
    }

    void copy_node_info(CNode*) override { say("info"); }
    void copy_request_data_to_inputs() override
    {
        say("ask");
        if (!manner.mixes)
            return CNodeOp::copy_request_data_to_inputs();
        for (int i = 0; i < inq_n_inputs(); ++i)
            if (Facts* input = received(i))
                input->request = mix(own().request, std::uint64_t(i));
    }
    void disabled_copy_request_data_to_inputs() override
    {
        say("pass");
        CNodeOp::disabled_copy_request_data_to_inputs();
    }
    void init_data(AbortPanel* abort) override
    {
        say("init");
        ask_again(abort);
        turn();
        if (manner.mixes)
            compute(&Facts::immediate);
        else
            CNodeOp::init_data(abort);
    }
    void generate_data(AbortPanel* abort) override
    {
        say("draw");
        if (manner.mixes)
            compute(&Facts::generated);
        else
            CNodeOp::generate_data(abort);
    }
    void disabled_init_data(AbortPanel* abort) override
    {
        say("wire");
        CNodeOp::disabled_init_data(abort);
    }
    void disabled_generate_data(AbortPanel* abort) override
    {
        say("wire drawn");
        CNodeOp::disabled_generate_data(abort);
    }
    bool inq_interactive() override { return manner.is_interactive; }

private:
    Facts& own() const { return *TracedData::facts_of(inq_node_data()); }
    Facts* received(int i) const { return TracedData::facts_of(inq_inputs(i)->inq_data()); }

    void say(const char* what) const
    {
        std::vector<const Facts*> seen{&own(), TracedData::facts_of(inq_converted_data())};
        for (int i = 0; i < inq_n_inputs(); ++i)
            seen.push_back(received(i));
        our_trace.say(what, serial, seen);
    }

    void compute(std::uint64_t Facts::*member)
    {
        std::uint64_t sum = mix(own().request, std::stoul(inq_node_name().str()));
        for (int i = 0; i < inq_n_inputs(); ++i)
            if (const Facts* input = received(i))
                sum = mix(sum, input->*member);
        own().*member = sum;
    }

    void ask_again(AbortPanel* abort)
    {
        ++our_trace.n_asking;
        if (manner.asks == GraphModel::Manner::ALL) {
            own().request |= 1;
            changed_request(abort);
        } else if (0 <= manner.asks && manner.asks < inq_n_inputs()) {
            if (Facts* input = received(manner.asks))
                input->request = mix(own().request, std::uint64_t(manner.asks)) | 1;
            changed_request(manner.asks, abort);
        }
        --our_trace.n_asking;
        say("asked");
    }

    void turn()
    {
        CNodeOpArray* array = inq_inputs(manner.turns);
        if (!array || array->inq_n_nodes() < 2 || (manner.forgets && our_trace.n_asking > 0))
            return;
        IntArray order;
        for (const int place : turned(own().request, std::size_t(array->inq_n_nodes())))
            order.add(place);
        array->reorder(&order, manner.forgets);
    }

    GraphModel::Manner manner;
    int serial;
};

/// Its name is its number.
class TracedNode : public CNode {
public:
    TracedNode(int id, const GraphModel::Species& species, CNodeDescriptor* descriptor,
               const GraphModel::Manner& manner)
        : id(id), species(species), descriptor(descriptor), manner(manner)
    {
        init();
    }

    ClassDescriptor* inq_class_descriptor() const override { return descriptor; }
    int inq_type() const override { return -1; }
    KIVString inq_name() const override { return std::to_string(id); }
    bool inq_is_universal() const override { return species.kind == GraphModel::Kind::UNIVERSAL; }
    bool inq_is_generic() const override { return species.kind == GraphModel::Kind::GENERIC; }
    gsl::owner<CNodeOp*> new_nodeop(int requested_type) override
    {
        our_trace.say("new " + std::to_string(our_ops.size()) + " of " + std::to_string(id) +
                      " for " + std::to_string(requested_type));
        return new TracedOp(this, manner);
    }

private:
    int id;
    const GraphModel::Species& species;
    CNodeDescriptor* descriptor;
    GraphModel::Manner manner;
};
