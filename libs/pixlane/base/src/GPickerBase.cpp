#include <pixlane/GPickerBase.h>

#include <utility>

namespace {

struct Entry : GPicked::PickedEntity {
    std::string type;
    int id = 0;
    const char* entity_type_name() const override { return type.c_str(); }
    int entity_id() const override { return id; }
};

std::unique_ptr<GPickerBase>& installed() {
    static std::unique_ptr<GPickerBase> picker;
    return picker;
}

// Answers of get_selection and get_pick_filters, kept alive for the caller.
Entry& last_entry() {
    static Entry entry;
    return entry;
}
std::vector<std::string>& last_filter() {
    static std::vector<std::string> filter;
    return filter;
}

} // namespace

void GPickerBase::set_picker(std::unique_ptr<GPickerBase> picker) {
    installed() = std::move(picker);
}

GPickerBase* GPickerBase::picker() {
    return installed().get();
}

int GPickerBase::current_selection_count() {
    return picker() ? static_cast<int>(picker()->selection().size()) : 0;
}

const GPicked::PickedEntity* GPickerBase::get_selection(int index) {
    if (!picker() || index < 0)
        return nullptr;
    const auto selection = picker()->selection();
    if (index >= static_cast<int>(selection.size()))
        return nullptr;
    Entry& entry = last_entry();
    entry.type = selection[static_cast<std::size_t>(index)].first;
    entry.id = selection[static_cast<std::size_t>(index)].second;
    return &entry;
}

int GPickerBase::get_number_pick_types() {
    return picker() ? static_cast<int>(picker()->pickable_types().size()) : 0;
}

void GPickerBase::get_pick_filters(const char** types, int& count) {
    count = 0;
    if (!picker() || !types)
        return;
    const int room = get_number_pick_types();
    last_filter() = picker()->filter();
    for (const std::string& type : last_filter()) {
        if (count >= room)
            break;
        types[count++] = type.c_str();
    }
}

void GPickerBase::add_filter_type(const char* type) {
    if (picker() && type)
        picker()->add_filter(type);
}

void GPickerBase::remove_filter_type(const char* type) {
    if (picker() && type)
        picker()->remove_filter(type);
}
