#include "Plugins/Vx2/host/processor.h"

#include "platform/build_host/action_rows.h"

#include <atomic>

PROCESSOR_INTERFACE::~PROCESSOR_INTERFACE() = default;

int PROCESSOR_INTERFACE::priority() const { return 0; }

QStringList PROCESSOR_INTERFACE::get_affected_directories() const { return {}; }

QStringList PROCESSOR_INTERFACE::get_virtual_files() const { return {}; }

int PROCESSOR_INTERFACE::allocate_action_group()
{
    static std::atomic<int> last{0};
    return ++last;
}

void PROCESSOR_INTERFACE::setup_dc(char const *converter, int converter_version)
{
    converter_text = QString::fromUtf8(converter);
    converter_number = converter_version;
}

void COMPLEX_ASSET_PROCESSOR::create_db_actions(QVector<UPDATE_DB_TABLE> const &tables, QString const &key,
                                                bool enabled, QVector<ACTION_INTERFACE *> &actions, FILE_TABLE const &,
                                                bool export_tables)
{
    if (key != waiting_key)
        waiting_actions.clear();
    waiting_key = key;

    ACTION_DB_GATE *const gate = new ACTION_DB_GATE(key, this);
    waiting_actions.append(gate);
    ACTION_INTERFACE *before = gate;
    for (UPDATE_DB_TABLE const &table : tables) {
        ACTION_UPDATE_DB *const update = new ACTION_UPDATE_DB(table, key, enabled, export_tables, this);
        update->add_host_dependency(before, false);
        gate->host_pull(update);
        actions.append(update);
        before = update;
    }
}
