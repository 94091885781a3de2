#include "Plugins/Vx2/load_time_objects.h"
#include "platform/build_host/schemas.h"

#include <gmock/gmock.h>

#include <sstream>

TEST(Vx2LoadTimeObjects, SchemasStandInOrderWithTheirTexts)
{
    const struct {
        char const *key, *description;
        int properties;
        char const *last, *help;  // of the last property
    } expected[] = {
        {"VariantMeshPart", "Variant mesh part", 2, "AnimationType", "Valid values: man, man_sentinel."},
        {"NamedRigidVariant", "Named Rigid Variant", 3, "AnimationType", "Valid values: man, man_sentinel."},
        {"Tree", "Tree mesh", 1, "TargetPath", "Name of the target folder for converted meshes."},
        {"RigidMesh", "Rigid mesh", 1, "TargetPath", "Name of the target folder for converted meshes."},
        {"RigidModelV2", "RigidModelV2", 14, "LodType",
         "Name of the lod type which is defined in Lightinglod_types_table.xml"},
        {"Vx2Tech", "Vx2Tech", 1, "Vx2TechSubFolder",
         "True will process TECH class nodes in the vex2 file (f.e. collision meshes). Default: false."},
        {"GenericMesh", "GenericMesh", 1, "TargetPath", "Name of the target folder for converted meshes."},
        {"RigidDatabasePatching", "RigidDatabasePatching", 1, "Enabled",
         "Whether or not we should update the database as well when processing rigids. Defaults to true or 1."},
        {"Animation", "Creates an animation", 19, "ExportAsReferencePose", ""},
        {"ComplexAnimation", "Variant mesh part", 1, "TargetPath",
         "Name of the target folder for converted animations and xml file."},
        {"LODDistances", "LOD Distances", 6, "LODDistance6", "LOD Distance 6"},
        {"LODQualities", "LOD Qualities", 6, "LODQuality6", "LOD Quality 6"},
        {"Vx2", "Vx2 information", 1, "OutputAnimDebugText", "True if outputting debug information, otherwise false."},
    };
    QVector<SCHEMA> const all = schemas();
    ASSERT_EQ(all.size(), int(std::size(expected)));
    for (int i = 0; i < all.size(); ++i) {
        SCOPED_TRACE(expected[i].key);
        EXPECT_EQ(all[i].key, expected[i].key);
        EXPECT_EQ(all[i].description, expected[i].description);
        ASSERT_EQ(all[i].properties.size(), expected[i].properties);
        EXPECT_EQ(all[i].properties.last().name, expected[i].last);
        EXPECT_EQ(all[i].properties.last().help, expected[i].help);
    }
    QStringList animation;
    for (SCHEMA_PROPERTY const &property : all[8].properties)
        animation += property.name;
    EXPECT_EQ(animation.mid(2, 3), QStringList({"FPS", "CoreTranslations", "FaceTranslations"}));
    EXPECT_EQ(animation.mid(16, 2), QStringList({"CinematicRightHandRotations", "IgnoreMetadata"}));
}

TEST(Vx2LoadTimeObjects, MaterialNamesByNumber)
{
    const struct {
        unsigned number;
        char const *name;
    } expected[] = {{0, "standard_depreciated"},  {17, "standard_depreciated"},
                    {46, "debug_geometry"},       {68, "standard"},
                    {76, "billboard_deprecated"}, {101, "global_terrain"}};
    for (const auto &row : expected)
        EXPECT_EQ(RIGID_MATERIAL_TYPE_NAMES[row.number], row.name) << row.number;
}

TEST(Vx2LoadTimeObjects, TweakerOfATakenNameKeepsItsDefault)
{
    KN::UniString const name = u"TREEBILLBOARD_PIXELSPERMETER";
    UTILITYDLL::I_TWEAKER *const first = UTILITYDLL::tweakers().at(name);
    {
        INTEGER_TWEAKER second("TREEBILLBOARD_PIXELSPERMETER", 17, "other", 1);
        EXPECT_EQ(UTILITYDLL::tweakers().at(name), first);
        EXPECT_TRUE(UTILITYDLL::set_tweaker(name, "25 "));
        EXPECT_EQ(second.value, 17);
    }
    EXPECT_EQ(UTILITYDLL::tweakers().at(name), first);  // the loser's end does not take it along
    EXPECT_FALSE(UTILITYDLL::set_tweaker(name, "wide"));
    EXPECT_FALSE(UTILITYDLL::set_tweaker(name, "25.5"));
    std::ostringstream text;
    first->write(text);
    EXPECT_EQ(text.str(), "25");
}
