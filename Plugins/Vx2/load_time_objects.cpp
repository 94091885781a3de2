#include "Plugins/Vx2/load_time_objects.h"

#include "Plugins/Vx2/host/rules.h"

#include <istream>
#include <ostream>

// clang-format off: a name a line would fill two screens
KN::String const RIGID_MATERIAL_TYPE_NAMES[RIGID_MATERIAL_TYPE_COUNT] = {
    "standard_depreciated",
    "burning_texture_depreciated",
    "rain_skirt_depreciated",
    "grass_depreciated",
    "rain_depreciated",
    "burning_vertex_alpha_depreciated",
    "tree_branch_depreciated",
    "tree_leaf_depreciated",
    "billboard_depreciated",
    "decal_parallax",
    "decal_normal",
    "decal_offset_height",
    "decal_environment",
    "vertex_wind_depreciated",
    "night_glow",
    "night_glow_texture",
    "standard_two_sided",
    "standard_depreciated",
    "standard_ambient_depreciated",
    "tree_branch_depreciated",
    "tree_leaf_depreciated",
    "standard_animated_depreciated",
    "bow_wave",
    "texture_combo_depreciated",
    "texture_combo_vertex_wind_depreciated",
    "campaign_trees_depreciated",
    "non_renderable",
    "standard_simple_depreciated",
    "point_light_depreciated",
    "texture_combo_vertex_wind",
    "texture_combo",
    "decal_waterfall",
    "standard_depreciated",
    "standard_simple",
    "burning_texture_depreciated",
    "burning_vertex_alpha_depreciated",
    "rain_depreciated",
    "rain_skirt_depreciated",
    "vertex_wind_depreciated",
    "standard_ambient_v2_depreciated",
    "campaign_trees",
    "standard_with_alpha_test_depreciated",
    "standard_ambient_v3_depreciated",
    "tree_depreciated",
    "tree_leaf_depreciated",
    "point_light",
    "debug_geometry",
    "RS_TERRAIN_depreciated",
    "RS_RIVER_depreciated",
    "custom_terrain",
    "RS_TERRAIN_LOD_depreciated",
    "RS_TERRAIN_OVERLAP_depreciated",
    "decal_tiled_parallax",
    "decal_tiled_normal",
    "standard_depreciated",
    "burning_texture_depreciated",
    "burning_vertex_alpha_depreciated",
    "rain_depreciated",
    "weighted_cloth",
    "weighted_depreciated",
    "vertex_cloth",
    "collision",
    "collision_shape",
    "tiled_dirtmap",
    "standard_ambient",
    "weighted",
    "RS_TERRAIN_depreciated",
    "projected_decal",
    "standard",
    "grass",
    "weighted_skin",
    "decal",
    "decal_dirtmap",
    "dirtmap",
    "tree",
    "tree_leaf",
    "billboard_deprecated",
    "weighted_decal",
    "weighted_decal_dirtmap",
    "weighted_dirtmap",
    "weighted_skin_decal",
    "weighted_skin_decal_dirtmap",
    "weighted_skin_dirtmap",
    "water",
    "unlit",
    "weighted_unlit",
    "terrain_blend",
    "projected_decal_v2",
    "ignore",
    "billboard",
    "RS_RIVER",
    "water_displace_volume",
    "rope_v5_deprecated",
    "rope",
    "anisotropic",
    "RS_TERRAIN_depreciated2",
    "RS_TERRAIN",
    "campaign_vegetation",
    "projected_decal_v3",
    "weighted_texture_blend",
    "projected_decal_v4",
    "global_terrain",
};
// clang-format on
KN::String const DECAL_OVERLAY = "decal_overlay";
KN::String const ALPHA_BLEND = "alpha_blend";

INTEGER_TWEAKER::INTEGER_TWEAKER(char const *called, int initial, char const *file, int place)
    : I_TWEAKER(called, file, place, file, called, called, false), value(initial)
{
    UTILITYDLL::tweakers().emplace(name, this);  // unless the name is there already
}

INTEGER_TWEAKER::~INTEGER_TWEAKER() = default;

void INTEGER_TWEAKER::write(std::ostream &stream) const { stream << value; }

void INTEGER_TWEAKER::read(std::istream &stream)
{
    int given;
    if (!(stream >> given))
        return;
    value = given;
    was_read = 1;
}

INTEGER_TWEAKER TREEBILLBOARD_PIXELSPERMETER("TREEBILLBOARD_PIXELSPERMETER", 17, "action_tree", 10);

// The schemas, one class a rule kind; the texts are shown to people who write rules. How a property is read, and what
// an absent one means, is told where it is read: rigid_rule.h and the actions.
namespace {

class RULE_SCHEMA_VARIANT_MESH_PART : public RULE_SCHEMA {
public:
    RULE_SCHEMA_VARIANT_MESH_PART() : RULE_SCHEMA("VariantMeshPart", "Variant mesh part")
    {
        add_property("TargetPath", "Name of the target folder for converted meshes.");
        add_property("AnimationType", "Valid values: man, man_sentinel.");
    }
} const rule_schema_variant_mesh_part;

class RULE_SCHEMA_NAMED_RIGID_VARIANT : public RULE_SCHEMA {
public:
    RULE_SCHEMA_NAMED_RIGID_VARIANT() : RULE_SCHEMA("NamedRigidVariant", "Named Rigid Variant")
    {
        add_property("TargetPath", "Name of the target folder for converted meshes.");
        add_property("TargetFilename", "Name of the target filename without the extension. Default: mesh.");
        add_property("AnimationType", "Valid values: man, man_sentinel.");
    }
} const rule_schema_named_rigid_variant;

class RULE_SCHEMA_TREE : public RULE_SCHEMA {
public:
    RULE_SCHEMA_TREE() : RULE_SCHEMA("Tree", "Tree mesh")
    {
        add_property("TargetPath", "Name of the target folder for converted meshes.");
    }
} const rule_schema_tree;

class RULE_SCHEMA_RIGID_MESH : public RULE_SCHEMA {
public:
    RULE_SCHEMA_RIGID_MESH() : RULE_SCHEMA("RigidMesh", "Rigid mesh")
    {
        add_property("TargetPath", "Name of the target folder for converted meshes.");
    }
} const rule_schema_rigid_mesh;

class RULE_SCHEMA_RIGID_MODEL_V2 : public RULE_SCHEMA {
public:
    RULE_SCHEMA_RIGID_MODEL_V2() : RULE_SCHEMA("RigidModelV2", "RigidModelV2")
    {
        add_property("TargetPath", "Name of the target folder for converted meshes.");
        add_property("TargetExtension", "Target file extension. Default: rigid_model_v2.");
        add_property("TextureFolder", "The path to the texture folder.");
        add_property("TextureSubFolder", "Relative path of textures from the path calculated from the TextureFolder.");
        add_property("TechSubFolder", "Relative path of tech folder from the TargetPath.");
        add_property("ExportTechFiles", "Whether to export tech files.");
        add_property("AnimationType", "Only needed for animated models.");
        add_property("SingleLOD", "No lod levels, does not require _lod postfix. Default: false.");
        add_property("UpdateDatabase", "Whether to update the database for this rigid model.");
        add_property("RigidCategory",
                     "Category value in the kestrel_rigid or kestrel_animated table, if UpdateDatabase is 'true'.");
        add_property("Tree", "True if tree billboard processing is required. Default: false.");
        add_property("CreateRigidModelDescriptionFile",
                     "True will create a Rigid Model Description File alongside with the model. Default: false.");
        add_property("IncendiaryRadius", "Minimum distance of incendiary points for automatic generation. Default: 2");
        add_property("LodType", "Name of the lod type which is defined in Lightinglod_types_table.xml");
    }
} const rule_schema_rigid_model_v2;

class RULE_SCHEMA_VX2_TECH : public RULE_SCHEMA {
public:
    RULE_SCHEMA_VX2_TECH() : RULE_SCHEMA("Vx2Tech", "Vx2Tech")
    {
        add_property("Vx2TechSubFolder",
                     "True will process TECH class nodes in the vex2 file (f.e. collision meshes). Default: false.");
    }
} const rule_schema_vx2_tech;

class RULE_SCHEMA_GENERIC_MESH : public RULE_SCHEMA {
public:
    RULE_SCHEMA_GENERIC_MESH() : RULE_SCHEMA("GenericMesh", "GenericMesh")
    {
        add_property("TargetPath", "Name of the target folder for converted meshes.");
    }
} const rule_schema_generic_mesh;

class RULE_SCHEMA_RIGID_DATABASE_PATCHING : public RULE_SCHEMA {
public:
    RULE_SCHEMA_RIGID_DATABASE_PATCHING() : RULE_SCHEMA("RigidDatabasePatching", "RigidDatabasePatching")
    {
        add_property(
            "Enabled",
            "Whether or not we should update the database as well when processing rigids. Defaults to true or 1.");
    }
} const rule_schema_rigid_database_patching;

class RULE_SCHEMA_ANIMATION : public RULE_SCHEMA {
public:
    RULE_SCHEMA_ANIMATION() : RULE_SCHEMA("Animation", "Creates an animation")
    {
        add_property("AnimationType", "Required: this describes the type of animation (man, cannon, horse &c).");
        add_property("CinematicAnimationType", "");
        add_property("FPS", "If filled then this describes the frame rate of the animation.");
        for (char const *const deprecated :
             {"CoreTranslations", "FaceTranslations", "FaceRotations", "LeftHandTranslations", "LeftHandRotations",
              "RightHandTranslations", "RightHandRotations", "CinematicCoreTranslations", "CinematicFaceTranslations",
              "CinematicFaceRotations", "CinematicLeftHandTranslations", "CinematicLeftHandRotations",
              "CinematicRightHandTranslations", "CinematicRightHandRotations"})
            add_property(deprecated, "");
        add_property("IgnoreMetadata", "");
        add_property("ExportAsReferencePose", "");
    }
} const rule_schema_animation;

class RULE_SCHEMA_COMPLEX_ANIMATION : public RULE_SCHEMA {
public:
    RULE_SCHEMA_COMPLEX_ANIMATION() : RULE_SCHEMA("ComplexAnimation", "Variant mesh part")
    {
        add_property("TargetPath", "Name of the target folder for converted animations and xml file.");
    }
} const rule_schema_complex_animation;

class RULE_SCHEMA_LOD_DISTANCES : public RULE_SCHEMA {
public:
    RULE_SCHEMA_LOD_DISTANCES() : RULE_SCHEMA("LODDistances", "LOD Distances")
    {
        for (char const level : {'1', '2', '3', '4', '5', '6'})
            add_property(QString("LODDistance") + level, QString("LOD Distance ") + level);
    }
} const rule_schema_lod_distances;

class RULE_SCHEMA_LOD_QUALITIES : public RULE_SCHEMA {
public:
    RULE_SCHEMA_LOD_QUALITIES() : RULE_SCHEMA("LODQualities", "LOD Qualities")
    {
        for (char const level : {'1', '2', '3', '4', '5', '6'})
            add_property(QString("LODQuality") + level, QString("LOD Quality ") + level);
    }
} const rule_schema_lod_qualities;

class RULE_SCHEMA_VX2 : public RULE_SCHEMA {
public:
    RULE_SCHEMA_VX2() : RULE_SCHEMA("Vx2", "Vx2 information")
    {
        add_property("OutputAnimDebugText", "True if outputting debug information, otherwise false.");
    }
} const rule_schema_vx2;

}  // namespace

SUPPORT::ANGLE_FUNCTIONS const &ANGLE_TABLE = SUPPORT::ANGLE_TABLE;
