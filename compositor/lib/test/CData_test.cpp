#include "compositor/lib/hdr/CData.h"
#include "compositor/lib/hdr/CDataConvertor.h"
#include "compositor/lib/hdr/CDataDescriptor.h"
#include "compositor/lib/hdr/CNodeOpArray.h"
#include "compositor/lib/hdr/CNodeRepository.h"
#include "compositor/lib/hdr/DAGOpTypeCompositor.h"
#include "compositor/lib/hdr/typeid.h"
#include "tests/support/Captured.h"
#include "tests/support/OldRecord.h"

#include <gtest/gtest.h>

namespace {
constexpr int FROM = 7101;
constexpr int TO = 7102;
constexpr int LATER = 7103;

class Datum : public CData {
public:
    CDataDescriptor* inq_desc() const override { return CDataDescriptor::find_desc_for(FROM); }
    int inq_type() const override { return FROM; }
    int inq_frameno() const override { return 1; }
};

class Convertor : public CDataConvertorDescriptor {
public:
    using CDataConvertorDescriptor::CDataConvertorDescriptor;
    gsl::owner<CDataConvertor*> new_convertor(CNodeOp*) override { return nullptr; }
};

CData* new_datum()
{
    return new Datum;
}

constexpr int GIVEN_CONVERSIONS[] = {TO, 0};

CDataDescriptor* from_descriptor()
{
    static auto* descriptor =
        new CDataDescriptor("From", "From", FROM, new_datum, true, GIVEN_CONVERSIONS, false);
    return descriptor;
}
} // namespace

TEST(typeid_registry, numbers_names_and_warns_of_a_second_use)
{
    const int first = register_type("typeid_test first");
    EXPECT_EQ(register_type("typeid_test second"), first + 1);
    const KIVString& name = inq_type_name(first);
    const Captured captured;
    EXPECT_EQ(register_type("typeid_test first"), first);
    EXPECT_NE(
        captured.inq_errors().find("Warning: cdata type 'typeid_test first'already registered.\n"),
        std::string::npos);
    EXPECT_NE(captured.inq_errors().find("compositor/lib/src/typeid"), std::string::npos);
    EXPECT_EQ(&inq_type_name(first), &name);
    EXPECT_EQ(inq_type_name(-1), "Unknown");
    EXPECT_EQ(inq_type_name(first + 2), "Unknown");
}

TEST(CDataDescriptor, gets_the_conversions_of_convertors_that_come_after_it)
{
    CDataDescriptor* descriptor = from_descriptor();
    auto* early = new Convertor(LATER, TO);
    auto* convertor = new Convertor(FROM, LATER);
    auto* second = new Convertor(FROM, LATER);
    const CNodeRepository* repository = CNodeRepository::inq_repository();
    EXPECT_EQ(repository->inq_convertor(FROM, LATER), convertor);
    EXPECT_NE(repository->inq_convertor(FROM, LATER), second);
    EXPECT_EQ(repository->inq_convertor(LATER, FROM), nullptr);

    const int* types = descriptor->inq_convertable_types();
    EXPECT_EQ(std::vector<int>(types, types + 4), (std::vector<int>{TO, LATER, LATER, 0}));
    EXPECT_EQ(GIVEN_CONVERSIONS[1], 0);

    const auto* late = new CDataDescriptor("Late", "Late", LATER, nullptr, false, nullptr, false);
    EXPECT_EQ(repository->inq_convertor(LATER, TO), early);
    EXPECT_FALSE(late->inq_can_convert_to(TO));
}

TEST(CData, reports_a_union_that_its_type_lacks)
{
    Datum datum;
    CNodeOpArray* inputs = nullptr;
    const Captured captured;
    datum.union_immediate_data_from(inputs, nullptr);
    datum.union_generated_data_from(&datum, nullptr);
    datum.union_change_data_from(inputs, new IntArray);
    const std::string errors = captured.inq_errors();
    std::size_t reports = 0;
    for (std::size_t at = 0; (at = errors.find("Program error.\n", at)) != std::string::npos; ++at)
        ++reports;
    EXPECT_EQ(reports, 3U);
    EXPECT_NE(errors.find("compositor/lib/src/CData"), std::string::npos);
}
