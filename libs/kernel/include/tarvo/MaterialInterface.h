#pragma once
// Access to the kernel's materials and CFD media, by opaque handles.
//
// Obtain with TarvoInterface::get_interface("Material") and dynamic_cast to MaterialInterface*;
// give it back with TarvoInterface::release_interface. Worker thread only, like the whole API.
// Handles are valid until the next command changes materials; never delete them.
//
// The order of the virtual operations is part of the interface: keep it.

#include <string>
#include <vector>

namespace TarvoInterface {

// Base of the interfaces that get_interface hands out.
class TarvoBaseInterface {
public:
    virtual ~TarvoBaseInterface() = default;
    // The name get_interface was asked for ("Material").
    virtual std::string interface_name() const = 0;
};

class MaterialInterface : public TarvoBaseInterface {
public:
    struct MaterialRecord;      // opaque
    struct PropertyGroupRecord; // opaque
    struct PropertyRecord;      // opaque
    using Material = const MaterialRecord*;
    using PropertyGroup = const PropertyGroupRecord*;
    using Property = const PropertyRecord*;

    // Scalar, vector, table (rows of numbers) and table with a header row: property_kind values.
    enum PropertyKind : int { SCALAR = 0, VECTOR = 1, TABLE = 2, TABLE_WITH_HEADER = 3 };

    // The material (structural or CFD medium) with this id, or null.
    virtual Material find_material(int material_id) = 0;
    // Every material and medium, by ascending id.
    virtual void list_materials(std::vector<Material>& materials) = 0;
    virtual int material_id(Material material) = 0;
    virtual std::string material_name(Material material) = 0;
    // The property group the material was created in (a CFD medium's group names its kind).
    virtual PropertyGroup material_group(Material material) = 0;
    // True for a CFD medium, false for a structural material.
    virtual bool is_cfd(Material material) = 0;
    // Each of the three answers false, leaving `value` as it was, when the material has no
    // value for the property.
    virtual bool get_tabular_value(Material material, Property property,
                                   std::vector<std::vector<double>>& value) = 0;
    virtual bool get_vector_value(Material material, Property property,
                                  std::vector<double>& value) = 0;
    virtual bool get_scalar_value(Material material, Property property, double& value) = 0;
    // The property of that name ("DENSITY", "CFD_MEDIA_TYPE"), or null.
    virtual Property property_by_name(const std::string& name) = 0;
    virtual std::string property_name(Property property) = 0;
    // A PropertyKind value.
    virtual int property_kind(Property property) = 0;
    virtual std::string group_name(PropertyGroup group) = 0;
    // The properties that belong to the group, in their defined order.
    virtual void group_properties(PropertyGroup group, std::vector<Property>& properties) = 0;
};

} // namespace TarvoInterface
