#pragma once

#include <memory>
#include <string>
#include <vector>

// One entry of the selection: an entity named by its type word ("surface") and id.
class GPicked {
public:
    class PickedEntity {
    public:
        virtual ~PickedEntity() = default;
        virtual const char* entity_type_name() const = 0;
        virtual int entity_id() const = 0;
    };
};

// The picker: the selection and the pick filter, process-wide (every view of every client shares
// them). The static operations delegate to the one installed picker (set_picker), which knows
// where the selection really lives (pixlane_tarvo installs one over the kernel's view state);
// with none installed the selection is empty and the filter stays empty.
//
// get_selection answers a pointer that stays valid until the next call of a static operation
// here. get_pick_filters fills `types` with pointers that stay valid until the filter changes;
// `types` must hold get_number_pick_types() entries.
//
// Threads: the rendering thread only, like the views; nothing is locked.
class GPickerBase {
public:
    virtual ~GPickerBase() = default;

    // Takes ownership; an empty pointer uninstalls.
    static void set_picker(std::unique_ptr<GPickerBase> picker);
    static GPickerBase* picker();

    static int current_selection_count();
    static const GPicked::PickedEntity* get_selection(int index);
    static int get_number_pick_types();
    static void get_pick_filters(const char** types, int& count);
    static void add_filter_type(const char* type);
    static void remove_filter_type(const char* type);

protected:
    // (type, id) of every selected entity, in selection order.
    virtual std::vector<std::pair<std::string, int>> selection() const = 0;
    // Every type the filter can hold, and the types it holds now.
    virtual std::vector<std::string> pickable_types() const = 0;
    virtual std::vector<std::string> filter() const = 0;
    virtual void add_filter(const std::string& type) = 0;
    virtual void remove_filter(const std::string& type) = 0;
};
