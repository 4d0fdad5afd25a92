#include "scene/hdr/BaseSceneAsset.h"

#include "kivlib/hdr/BaseFileFinder.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/Record.h"
#include "kivlib/hdr/file_operations.h"

KIV_STORED_CLASS(BaseSceneAsset, -1);

BaseSceneAsset::BaseSceneAsset(unsigned long tag, unsigned int type, const KIVFile& file)
    : tag(tag), type(type), file(file), user_name(file.get_user_name())
{}

BaseSceneAsset::BaseSceneAsset(KIVIStream& stream) : KIVObject(stream)
{
    KIVString path;
    RecordReader fields(stream);
    fields.value(tag);
    fields.value(type);
    fields.headed(user_name);
    fields.headed(path);
    file.set_universal_or_legacy_path(path);
    file.set_user_name(user_name);
    *coutp << "Read user name : " << user_name << "\n";
    *coutp << "Read file name : " << path << "\n";
}

void BaseSceneAsset::storer(KIVOStream& stream)
{
    KIVObject::storer(stream);
    RecordWriter fields(stream);
    fields.value(tag);
    fields.value(type);
    fields.headed(user_name);
    fields.headed(file.inq_universal_path());
}

void BaseSceneAsset::set_user_name(const KIVString& name)
{
    user_name = name;
    file.set_user_name(name); // references to the file keep it
    has_changed = true;
}

void BaseSceneAsset::set_local_path(const KIVString& path)
{
    file.set_local_path(path);
    has_changed = true;
}

void BaseSceneAsset::set_legacy_path(const KIVString& path)
{
    file.set_universal_or_legacy_path(path);
    has_changed = true;
}

bool BaseSceneAsset::look_for_file(const char* title, const char* message)
{
    if (BaseFileFinder* finder = inq_file_finder())
        return follow_finder(*finder, title);
    if (!inq_file_exists(file))
        *coutp << message << inq_local_path() << "\n";
    return false;
}

bool BaseSceneAsset::follow_finder(BaseFileFinder& finder, const char* title)
{
    bool leave = false;
    const KIVString path = finder.find_replacement(file, title, &leave);
    if (!leave && !path.is_null() && !(path == inq_local_path()))
        set_local_path(path);
    return leave;
}
