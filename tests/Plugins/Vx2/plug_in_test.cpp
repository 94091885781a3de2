// The module as a host meets it: through Qt's loader, with nothing of it linked.

#include "Plugins/Vx2/host/processor.h"
#include "Plugins/Vx2/host/tweaker.h"
#include "foundation/heap.h"
#include "platform/build_host/schemas.h"

#include <QtCore/QJsonObject>
#include <QtCore/QLibrary>
#include <QtCore/QPluginLoader>

#include <gtest/gtest.h>

#include <cstdio>
#include <set>

static QString const module_path = MODULE_PATH;

TEST(Vx2Module, MetadataHasExactlyItsKeys)
{
    QJsonObject const expected = {{"IID", "kn.MOX.Vx2"},
                                  {"className", "PLUGIN"},
                                  {"version", 328448},
                                  {"debug", false},
                                  {"MetaData", QJsonObject()}};
    EXPECT_EQ(QPluginLoader(module_path).metaData(), expected);
}

TEST(Vx2Module, ComesAndGoesWithAllItRegisters)
{
    KN::UniString const tweaker = u"TREEBILLBOARD_PIXELSPERMETER";
    for (int times = 0; times < 2; ++times) {
        QPluginLoader loader(module_path);
        loader.setLoadHints({});  // Qt keeps plug-ins in memory unless told otherwise
        ASSERT_TRUE(loader.load()) << loader.errorString().toStdString();
        EXPECT_EQ(schemas().size(), 13);
        EXPECT_EQ(UTILITYDLL::tweakers().count(tweaker), 1u);
        ASSERT_TRUE(loader.instance());
        ASSERT_TRUE(loader.unload());
        EXPECT_EQ(schemas().size(), 0);
        EXPECT_EQ(UTILITYDLL::tweakers().count(tweaker), 0u);
    }
}

TEST(Vx2Module, OneInstanceUntilSomebodyDeletesIt)
{
    QPluginLoader loader(module_path);
    using INSTANCE = QObject *();
    auto *const instance = reinterpret_cast<INSTANCE *>(QLibrary::resolve(module_path, "qt_plugin_instance"));
    ASSERT_TRUE(instance);
    QObject *const object = instance();
    EXPECT_EQ(instance(), object);
    EXPECT_EQ(object->qt_metacast("PLUGIN"), object);
    EXPECT_EQ(object->qt_metacast("QObject"), object);
    EXPECT_EQ(object->qt_metacast("PLUGIN_INTERFACE"), qobject_cast<PLUGIN_INTERFACE *>(object));
    EXPECT_EQ(object->qt_metacast("VX2_PROCESSOR"), nullptr);
    EXPECT_EQ(object->qt_metacast(nullptr), nullptr);
    EXPECT_STREQ(object->metaObject()->className(), "PLUGIN");
    EXPECT_EQ(object->metaObject()->superClass(), &QObject::staticMetaObject);
    EXPECT_EQ(object->metaObject()->methodOffset(), object->metaObject()->methodCount());

    delete object;
    auto *const plug_in = qobject_cast<PLUGIN_INTERFACE *>(instance());
    ASSERT_TRUE(plug_in);
    QVector<PROCESSOR_INTERFACE *> const processors = plug_in->get_processors();
    EXPECT_EQ(processors.size(), 2);
    qDeleteAll(processors);
}

TEST(Vx2Module, ProcessorsAreNewOnEachCallAndTheCallers)
{
    QPluginLoader loader(module_path);
    auto *const plug_in = qobject_cast<PLUGIN_INTERFACE *>(loader.instance());
    ASSERT_TRUE(plug_in);
    std::int64_t const before = KN::MEMORY_TRACKING::current_alloc_size(0);
    {
        QVector<PROCESSOR_INTERFACE *> const all = plug_in->get_processors() + plug_in->get_processors();
        EXPECT_EQ(std::set<PROCESSOR_INTERFACE *>(all.begin(), all.end()).size(), 4u);
        EXPECT_EQ(all[0]->get_name(), "Vx2");
        EXPECT_EQ(all[0]->converter_name(), "MOX_Vx2");
        EXPECT_EQ(all[0]->converter_version(), 4);
        EXPECT_EQ(static_cast<COMPLEX_ASSET_PROCESSOR *>(all[0])->processor_prefix(), "mox_rigid_");
        EXPECT_EQ(all[1]->get_name(), "ModelAGF");
        EXPECT_EQ(all[1]->converter_name(), "");
#ifndef HOUSE_SANITIZED
        EXPECT_GT(KN::MEMORY_TRACKING::current_alloc_size(0), before);
#endif
        qDeleteAll(all);
    }
    EXPECT_EQ(KN::MEMORY_TRACKING::current_alloc_size(0), before);
}

TEST(Vx2Module, ExportsItsEntryAndTheActionsThatOthersDeriveFrom)
{
    std::set<std::string> expected = {"qt_plugin_instance", "qt_plugin_query_metadata", "ACTION_VEX2::get_name",
                                      "ACTION_MODEL::set_final_target_path"};
    for (std::string const name : {"VEX2", "MODEL", "ANIMATION", "GENERICMESH"}) {
        std::string const action = "ACTION_" + name;
        expected.insert({action + "::" + action, action + "::~" + action});
        if (name != "VEX2")
            expected.insert({action + "::convert", action + "::get_affected_files"});
    }
    std::set<std::string> exported;
    FILE *const listing = popen((NM_PROGRAM " -D --defined-only -C " + module_path).toUtf8().constData(), "r");
    ASSERT_TRUE(listing);
    for (char line[1024]; std::fgets(line, sizeof line, listing);) {
        std::string const symbol = std::string(line).substr(19);  // behind address and type
        exported.insert(symbol.substr(0, symbol.find_first_of("(\n")));
    }
    EXPECT_EQ(pclose(listing), 0);
    EXPECT_EQ(exported, expected);
}
