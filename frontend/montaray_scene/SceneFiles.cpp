#include "frontend/montaray_scene/SceneFiles.h"

#include "compositor/lib/hdr/CNodeGraph.h"
#include "coversheet/lib/hdr/CoverSheet.h"
#include "frontend/montaray_scene/Findings.h"
#include "kivlib/hdr/ClassDescriptor.h"
#include "kivlib/hdr/GeneralIStream.h"
#include "kivlib/hdr/KIVDLLUsageList.h"
#include "kivlib/hdr/KIVFileReference.h"
#include "kivlib/hdr/SearchFileFinder.h"
#include "kivlib/hdr/file_operations.h"
#include "scene/hdr/KIVAssetManager.h"
#include "xsheet/column/hdr/XSheet.h"
#include "xsheet/store_control/hdr/InterruptedSave.h"
#include "xsheet/store_control/hdr/SceneParts.h"
#include "xsheet/store_control/hdr/StoreFile.h"

#include <algorithm>

namespace {
/// A part as a stream, and what is wrong with it.
class Part {
public:
    Part(const KIVString& folder, const char* name, const InterruptedSave& interrupted)
        : path(place_of(folder, name, interrupted)), stream(path.c_str())
    {}

    template <class Class> std::unique_ptr<Class> read()
    {
        std::unique_ptr<Class> object = read_part<Class>(stream);
        return stream.inq_error_state() ? nullptr : std::move(object);
    }

    void tell(Alerts& alerts, Findings& findings) const
    {
        stream.alert_user_if_error();
        alerts.move_to(findings, path);
    }

    GeneralIStream& inq_stream() { return stream; }
    const KIVString& inq_path() const { return path; }

    static KIVString place_of(const KIVString& folder, const KIVString& name,
                              const InterruptedSave& interrupted)
    {
        const bool is_pending = std::ranges::count(interrupted.inq_pending(), name) > 0;
        return KIVString(folder).append_path(is_pending ? name + "~" : name);
    }

private:
    KIVString path;
    GeneralIStream stream;
};

/// Reads the parts of one folder.
class Reader {
public:
    Reader(const KIVString& folder, const InterruptedSave& interrupted, Findings& findings)
        : folder(folder), interrupted(interrupted), findings(findings)
    {}

    bool has(const char* name) const
    {
        return inq_file_exists(Part::place_of(folder, name, interrupted));
    }

    Part open(const char* name) const { return {folder, name, interrupted}; }
    void tell(const Part& part) { part.tell(alerts, findings); }

    template <class Class> void check(const char* name)
    {
        Part part = open(name);
        part.read<Class>();
        tell(part);
    }

    void check_record()
    {
        Part part = open(ASSET_PART);
        KIVFile(folder).extract_kvd(part.inq_stream());
        tell(part);
    }

private:
    const KIVString& folder;
    const InterruptedSave& interrupted;
    Findings& findings;
    Alerts alerts;
};
} // namespace

void check_parts(const KIVString& folder, const InterruptedSave& interrupted, Findings& findings)
{
    Reader reader(folder, interrupted, findings);
    reader.tell(reader.open(SCENE_CONTENTS)); // its reader would open the others
    reader.check<XSheet>(XSHEET_PART);
    reader.check<CoverSheet>(COVER_SHEET_PART);
    reader.check<CNodeGraph>(GRAPH_PART);
    if (reader.has(OLD_ASSET_PART))
        reader.check<KIVAssetManager>(OLD_ASSET_PART);
    if (reader.has(ASSET_PART) || !reader.has(OLD_ASSET_PART))
        reader.check_record();
    if (reader.has(DLL_USAGE_PART))
        reader.tell(reader.open(DLL_USAGE_PART));
    else
        findings.note(KIVString(folder).append_path(DLL_USAGE_PART),
                      "is not there; no load needs it");
}

void check_class_usage(const KIVString& folder, const InterruptedSave& interrupted,
                       Findings& findings)
{
    Reader reader(folder, interrupted, findings);
    if (!reader.has(DLL_USAGE_PART))
        return;
    Part part = reader.open(DLL_USAGE_PART);
    if (part.inq_stream().inq_error_state())
        return; // told with the other parts
    const std::unique_ptr<KIVDLLUsageList> usage = part.read<KIVDLLUsageList>();
    if (!usage) {
        reader.tell(part);
        return;
    }
    for (const ClassDescriptor* descriptor : usage->inq_descriptors())
        if (descriptor->inq_is_from_stream())
            findings.fault(part.inq_path(),
                           "the class " + descriptor->inq_name() + " is not installed");
}

namespace {
/// Looks for the files of one asset record.
class AssetCheck {
public:
    AssetCheck(const KIVString& folder, const KIVString& record, FileSearch& search,
               Findings& findings)
        : folder(folder), record(record), search(search), findings(findings)
    {}

    void check(unsigned int kind, unsigned long tag, const KIVFile& file)
    {
        const KIVString path = KIVString(folder).append_path(file);
        const KIVString place = search.find(path);
        const KIVString asset = KIVString(ASSET_KIND_NAMES[kind]) + " " + std::to_string(tag) +
                                " (" + file.get_user_name() + "): ";
        if (!(place == path))
            findings.note(record, asset + path + " is now at " + place);
        else if (!inq_file_exists(path))
            findings.fault(record, asset + path + " is missing" + elsewhere(file));
    }

private:
    static KIVString elsewhere(const KIVFile& file)
    {
        return file.inq_universal_path() == file ? KIVString()
                                                 : ", and so is " + file.inq_universal_path();
    }

    const KIVString& folder;
    const KIVString& record;
    FileSearch& search;
    Findings& findings;
};

void check_record(const KIVFile& folder, AssetCheck& assets)
{
    for (unsigned int kind = 0; kind < ASSET_KIND_COUNT; ++kind)
        for (KIVFileReferenceListIter i(folder.inq_reference_list_value(ASSET_KIND_NAMES[kind]));
             i.ok(); i.advance())
            assets.check(kind, static_cast<unsigned long>(i.inq_tag()), i.inq_target());
}

void check_old_assets(const KIVAssetManager& manager, AssetCheck& assets)
{
    for (unsigned int kind = 0; kind < ASSET_KIND_COUNT; ++kind)
        for (const unsigned long tag : manager.inq_tags(kind))
            assets.check(kind, tag, manager.lookup_asset(tag, kind)->inq_kivfile());
}
} // namespace

void check_assets(const KIVString& folder, const InterruptedSave& interrupted, FileSearch& search,
                  Findings& findings)
{
    const Reader reader(folder, interrupted, findings);
    const bool is_old = !reader.has(ASSET_PART) && reader.has(OLD_ASSET_PART);
    Part part = reader.open(is_old ? OLD_ASSET_PART : ASSET_PART);
    AssetCheck assets(folder, part.inq_path(), search, findings);
    if (is_old) {
        if (const auto manager = part.read<KIVAssetManager>())
            check_old_assets(*manager, assets);
    } else {
        KIVFile folder_file(folder);
        folder_file.extract_kvd(part.inq_stream());
        check_record(folder_file, assets);
    }
}
