#include "scene/bench/cereal_scene.h"

#include "scene/bench/large_sheet.h"

#include <cereal/archives/binary.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/polymorphic.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>
#include <fstream>

// The classes hold the fields that a column, its keys, their data and their easing hold in a file
// of ours, of the same types and in the same nesting. Keys, data and easing are objects on the
// heap behind pointers to a base, so each has a class header; shared pointers keep identity, and
// data points back to its cell.

namespace cereal_keys {
struct Cell;

struct Data {
    virtual ~Data() = default;

    std::shared_ptr<std::string> text;
    std::weak_ptr<Cell> cell;
    int is_ringed = 0;

    template <class Archive> void serialize(Archive& archive) { archive(text, cell, is_ringed); }
};

struct NumericData : Data {
    double element = 0.0;

    template <class Archive> void serialize(Archive& archive)
    {
        archive(cereal::base_class<Data>(this), element);
    }
};

struct Easing {
    virtual ~Easing() = default;

    template <class Archive> void serialize(Archive&) {}
};

struct CurveEasing : Easing {
    int number_between = 0;
    int sample_rate = 1;
    std::vector<double> points;

    template <class Archive> void serialize(Archive& archive)
    {
        archive(cereal::base_class<Easing>(this), number_between, sample_rate, points);
    }
};

struct Cell {
    virtual ~Cell() = default;

    long label = 0;
    int number = 0;
    int is_data_elsewhere = 0;
    std::shared_ptr<Data> data;

    template <class Archive> void serialize(Archive& archive)
    {
        archive(label, number, is_data_elsewhere, data);
    }
};

struct NumericKey : Cell {
    int interp_len = 0;
    int target_interp_len = -1;
    int mode = 0;
    int sample_rate = 1;
    std::shared_ptr<Easing> easing;
    std::shared_ptr<Data> ratio_data;

    template <class Archive> void serialize(Archive& archive)
    {
        archive(cereal::base_class<Cell>(this), interp_len, target_interp_len, mode, sample_rate,
                easing, ratio_data);
    }
};

struct Column {
    std::vector<std::shared_ptr<Cell>> keys;
    long label = 0;

    template <class Archive> void serialize(Archive& archive) { archive(keys, label); }
};
} // namespace cereal_keys

CEREAL_REGISTER_TYPE(cereal_keys::NumericData)
CEREAL_REGISTER_TYPE(cereal_keys::CurveEasing)
CEREAL_REGISTER_TYPE(cereal_keys::NumericKey)

using namespace cereal_keys;

struct CerealScene::Sheet {
    std::vector<Column> columns;
};

CerealScene::CerealScene(int columns, int keys) : sheet(std::make_unique<Sheet>())
{
    sheet->columns.resize(static_cast<std::size_t>(columns));
    for (int c = 0; c < columns; ++c) {
        Column& column = sheet->columns[static_cast<std::size_t>(c)];
        column.label = c + 1;
        for (int k = 0; k < keys; ++k) {
            auto key = std::make_shared<NumericKey>();
            auto data = std::make_shared<NumericData>();
            auto easing = std::make_shared<CurveEasing>();
            data->element = large_sheet::value(c, k);
            data->cell = key;
            easing->number_between = large_sheet::FRAMES_BETWEEN_KEYS - 1;
            key->label = k + 1;
            key->number = large_sheet::frame(k);
            key->interp_len = large_sheet::FRAMES_BETWEEN_KEYS - 1;
            key->data = data;
            key->easing = easing;
            column.keys.push_back(key);
        }
    }
}

CerealScene::CerealScene(const std::string& path) : sheet(std::make_unique<Sheet>())
{
    std::ifstream file(path, std::ios::binary);
    cereal::BinaryInputArchive archive(file);
    archive(sheet->columns);
}

CerealScene::~CerealScene() = default;

void CerealScene::save(const std::string& path) const
{
    std::ofstream file(path, std::ios::binary);
    cereal::BinaryOutputArchive archive(file);
    archive(sheet->columns);
}

int CerealScene::count_keys() const
{
    std::size_t count = 0;
    for (const Column& column : sheet->columns)
        count += column.keys.size();
    return static_cast<int>(count);
}
