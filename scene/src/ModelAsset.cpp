#include "scene/hdr/ModelAsset.h"

#include "kivlib/hdr/ConsoleOStream.h"

KIV_STORED_CLASS(ModelAsset, -1);

ModelAsset::ModelAsset(KIVIStream& stream) : BaseSceneAsset(stream)
{
    *cerrp << "Shouldn't be trying to read a ModelAsset from disc\n";
}

void ModelAsset::storer(KIVOStream&)
{
    *cerrp << "Shouldn't be trying to store a ModelAsset to disc\n";
}

bool ModelAsset::check_for_lost_file()
{
    return look_for_file("Replace lost color model", "MISSING MODEL FILE : ");
}
