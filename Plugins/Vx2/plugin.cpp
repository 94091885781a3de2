#include "Plugins/Vx2/plugin.h"

#include "Plugins/Vx2/model_agf_processor.h"
#include "Plugins/Vx2/vx2_processor.h"

#include <QtCore/QtPlugin>

#include <cstdint>

PLUGIN::~PLUGIN() = default;

QVector<PROCESSOR_INTERFACE *> PLUGIN::get_processors() { return {new VX2_PROCESSOR, new MODEL_AGF_PROCESSOR}; }

namespace {

// The metadata by which the loader knows the library, written out because today's moc would emit another encoding: a
// marker and a document of Qt's binary JSON, which is little-endian. Members stand in the order of their keys; offsets
// count from the object's size field. A value is type (3 bits), one bit that an integer stands in the value itself,
// one bit that the key is Latin-1, and the integer or the offset of the data (27 bits). Texts have their length in
// front and zeros behind them up to the next multiple of four.
constexpr std::uint32_t json_value(std::uint32_t type, bool holds_integer, std::uint32_t integer_or_offset)
{
    return type | std::uint32_t(holds_integer) << 3 | 1u << 4 | integer_or_offset << 5;
}
constexpr std::uint32_t json_bool = 1, json_number = 2, json_string = 3, json_object = 5;

struct PLUGIN_METADATA {
    char marker[12] = {'Q', 'T', 'M', 'E', 'T', 'A', 'D', 'A', 'T', 'A', ' ', ' '};
    char tag[4] = {'q', 'b', 'j', 's'};
    std::uint32_t format = 1;

    std::uint32_t size = 136;
    std::uint32_t members = 5 << 1 | 1;  // the lowest bit marks an object
    std::uint32_t table = 116;

    std::uint32_t iid_value = json_value(json_string, true, 24);  // the bit marks a Latin-1 text here
    std::uint16_t iid_key_size = 3;
    char iid_key[6] = "IID";
    std::uint16_t iid_size = 10;
    char iid[10] = {'k', 'n', '.', 'M', 'O', 'X', '.', 'V', 'x', '2'};

    std::uint32_t meta_data_value = json_value(json_object, false, 52);
    std::uint16_t meta_data_key_size = 8;
    char meta_data_key[10] = "MetaData";
    std::uint32_t meta_data[3] = {12, 1, 0};  // size, no members, no table

    std::uint32_t class_name_value = json_value(json_string, true, 80);
    std::uint16_t class_name_key_size = 9;
    char class_name_key[10] = "className";
    std::uint16_t class_name_size = 6;
    char class_name[6] = {'P', 'L', 'U', 'G', 'I', 'N'};

    std::uint32_t debug_value = json_value(json_bool, false, 0);
    std::uint16_t debug_key_size = 5;
    char debug_key[6] = "debug";

    std::uint32_t version_value = json_value(json_number, true, 0x050300);  // the Qt this interface was fixed with
    std::uint16_t version_key_size = 7;
    char version_key[10] = "version";

    std::uint32_t offsets[5] = {12, 36, 64, 88, 100};
};
static_assert(sizeof(PLUGIN_METADATA) == 12 + 8 + 136);

QT_PLUGIN_METADATA_SECTION constexpr PLUGIN_METADATA qt_pluginMetaData[1];

}  // namespace

// qt_plugin_query_metadata and qt_plugin_instance. The instance is held by a weak pointer without a lock: the loader
// asks on one thread.
QT_MOC_EXPORT_PLUGIN(PLUGIN, PLUGIN)
