// Loads plug-in modules and owns their processors. Modules stay in the process to its end: texts that were literals in
// a module, such as table names, live on in the host's books.
#pragma once

#include "Plugins/Vx2/host/processor.h"
#include "platform/build_host/api.h"

#include <QtCore/QStringList>

#include <memory>
#include <vector>

class QPluginLoader;

class BUILD_HOST_API PLUG_INS {
public:
    PLUG_INS();
    ~PLUG_INS();  // deletes the processors
    PLUG_INS(PLUG_INS const &) = delete;
    PLUG_INS &operator=(PLUG_INS const &) = delete;

    // Loads one module and takes its processors. False, with a line in `fault`, if it is none of ours.
    bool load(QString const &file, QString &fault);
    // All modules of a folder, in order of their names.
    bool load_folder(QString const &folder, QStringList &faults);

    // In the order in which they plan.
    std::vector<PROCESSOR_INTERFACE *> processors() const;

private:
    std::vector<std::unique_ptr<QPluginLoader>> loaders;
    std::vector<std::unique_ptr<PROCESSOR_INTERFACE>> owned;
};
