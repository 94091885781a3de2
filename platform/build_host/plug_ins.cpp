#include "platform/build_host/plug_ins.h"

#include <QtCore/QDir>
#include <QtCore/QLibrary>
#include <QtCore/QPluginLoader>

#include <algorithm>

PLUG_INS::PLUG_INS() = default;

PLUG_INS::~PLUG_INS() = default;

bool PLUG_INS::load(QString const &file, QString &fault)
{
    auto loader = std::make_unique<QPluginLoader>(file);
    QObject *const instance = loader->instance();
    if (!instance) {
        fault = QStringLiteral("%1: cannot be loaded: %2").arg(file, loader->errorString());
        return false;
    }
    PLUGIN_INTERFACE *const plug_in = qobject_cast<PLUGIN_INTERFACE *>(instance);
    if (!plug_in) {
        fault = QStringLiteral("%1: is no plug-in of this program").arg(file);
        loader->unload();
        return false;
    }
    for (PROCESSOR_INTERFACE *const processor : plug_in->get_processors())
        owned.emplace_back(processor);
    loaders.push_back(std::move(loader));
    return true;
}

bool PLUG_INS::load_folder(QString const &folder, QStringList &faults)
{
    bool good = true;
    QDir const directory(folder);
    for (QString const &name : directory.entryList(QDir::Files, QDir::Name)) {
        QString fault;
        if (QLibrary::isLibrary(name) && !load(directory.absoluteFilePath(name), fault)) {
            faults.append(fault);
            good = false;
        }
    }
    return good;
}

std::vector<PROCESSOR_INTERFACE *> PLUG_INS::processors() const
{
    std::vector<PROCESSOR_INTERFACE *> ordered;
    for (auto const &processor : owned)
        ordered.push_back(processor.get());
    std::stable_sort(ordered.begin(), ordered.end(), [](PROCESSOR_INTERFACE const *a, PROCESSOR_INTERFACE const *b) {
        return a->priority() < b->priority();
    });
    return ordered;
}
