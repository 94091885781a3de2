// PLUGIN: the one object that the host's loader takes from this library. It hands out the processors and holds nothing.
#pragma once

#include "Plugins/Vx2/host/processor.h"

#include <QtCore/QObject>

class PLUGIN : public QObject, public PLUGIN_INTERFACE {
    Q_OBJECT
    Q_INTERFACES(PLUGIN_INTERFACE)

public:
    ~PLUGIN() override;
    // [0] scene files, [1] fragments of finished models and materials: new ones on each call, the caller's from then
    // on.
    QVector<PROCESSOR_INTERFACE *> get_processors() override;
};
