#include "kivlib/hdr/GeneralIStream.h"
#include "kivlib/hdr/NumberedList.h"
#include "kivlib/hdr/alert_panel.h"
#include "kivlib/hdr/file_operations.h"
#include "kivlib/hdr/store_in_place.h"
#include "xsheet/column/hdr/Column.h"
#include "xsheet/node/hdr/SubColPrefs.h"
#include "xsheet/node/hdr/XSNode.h"

namespace {
constexpr int FOLDER_MODE = 0777;

/// What can't stand in a file name. A line end stays as it is: old files have it.
constexpr std::string_view REPLACED = "/\\& \t";

KIVString file_name_of(const KIVString& type_name)
{
    std::string name = type_name.str();
    for (char& c : name)
        if (REPLACED.find(c) != std::string_view::npos)
            c = '_';
    return name;
}

int place_of(const SubColumn& sub_column)
{
    return static_cast<int>(sub_column.inq_label()) - 1;
}

/// The settings of the sub-columns of one node, as they stand in a file.
class Preferences {
public:
    explicit Preferences(std::unique_ptr<NumberedList> list) : list(std::move(list)) {}
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;
    ~Preferences()
    {
        for (const NumLinkOb& link : list->inq_links())
            delete link.value();
    }

    void add(gsl::owner<SubColPrefs*> settings, int place) { list->add(settings, place); }
    bool inq_is_empty() const { return list->inq_links().empty(); }
    const NumberedList& inq_list() const { return *list; }

    SubColPrefs* find(int place) const
    {
        KIVObject* object = list->find_object_at(place);
        return object && object->is_kind_of("SubColPrefs") ? static_cast<SubColPrefs*>(object)
                                                           : nullptr;
    }

private:
    std::unique_ptr<NumberedList> list;
};
} // namespace

KIVString XSNode::inq_prefs_file_for_type(bool create) const
{
    KIVString path = get_user_kiv_directory();
    if (create)
        create_user_kiv_directory();
    path.append_path("Montaray");
    if (create && !inq_file_exists(path) && makedir(path, FOLDER_MODE, false) != 0) {
        run_alert_panel("Can't make directory " + path + "\nPreferences not saved", "", "OK",
                        nullptr, nullptr);
        return {};
    }
    path.append_path(file_name_of(inq_type_name()));
    return path + "_col.prefs";
}

void XSNode::store_column_preferences() const
{
    if (!column)
        return;
    Preferences preferences(std::make_unique<NumberedList>());
    for (SubColumn* sub_column : column->inq_sub_column_list()->of<SubColumn>())
        if (SubColPrefs* settings = sub_column->create_preferences_object())
            preferences.add(settings, place_of(*sub_column));
    if (preferences.inq_is_empty())
        return;
    const KIVString file = inq_prefs_file_for_type(true);
    if (!file.is_null())
        store_in_place(preferences.inq_list(), file, OnFailure::SAY_NOTHING);
}

void XSNode::load_and_apply_column_preferences()
{
    GeneralIStream stream(inq_prefs_file_for_type(false).c_str());
    NumberedList* list = NumberedList::read_from(stream);
    if (!list || !stream.claim(list))
        return;
    const Preferences preferences{std::unique_ptr<NumberedList>(list)};
    if (!column || stream.inq_error_state() != KIVStream::OKAY)
        return;
    for (SubColumn* sub_column : column->inq_sub_column_list()->of<SubColumn>())
        if (SubColPrefs* settings = preferences.find(place_of(*sub_column)))
            sub_column->apply_preferences_object(settings);
}
