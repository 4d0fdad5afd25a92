#include "scene/hdr/LevelAsset.h"

#include "kivlib/hdr/KIVDefaults.h"
#include "kivlib/hdr/Record.h"

KIV_STORED_CLASS(LevelAsset, -1);

namespace {
// Files have a place for the setting, which has never been used.
constexpr int NO_SETTING = -1;

bool inq_default_registration_editable()
{
    return KIVDefaults::inq_default("InkPaintEditRegistration", false);
}
} // namespace

LevelAsset::LevelAsset(unsigned long tag, unsigned int type, const KIVFile& file)
    : BaseSceneAsset(tag, type, file), registration_editable(inq_default_registration_editable())
{}

LevelAsset::LevelAsset(KIVIStream& stream)
    : BaseSceneAsset(stream), registration_editable(inq_default_registration_editable())
{
    RecordReader(stream).dropped_int(always());
}

void LevelAsset::storer(KIVOStream& stream)
{
    BaseSceneAsset::storer(stream);
    stream << NO_SETTING;
}

bool LevelAsset::check_for_lost_file()
{
    return look_for_file("Replace lost level", "MISSING LEVEL FILE : ");
}
