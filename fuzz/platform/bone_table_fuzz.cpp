// A skeleton from the bytes of a bone table. Seeds: platform_seeds.
#include "Plugins/Vx2/host/bone_name_table.h"
#include "foundation/messages.h"
#include "fuzz_kit.h"
#include "platform/build_host/project.h"

#include <set>

namespace {

struct COUNTING_SINK final : KN::MessageSink {
    void message(KN::String const &line, int) override
    {
        ++lines;
        FUZZ::require(line.find('\n') == line.npos, "a message is one line");
    }
    int lines = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    using namespace FUZZ;
    static SCRATCH const scratch;
    static bool const is_set = [] {
        QString const root = QString::fromStdString(scratch.folder.string());
        set_current_roots({root + "/raw", root + "/working", root + "/old_raw", root + "/old_working"});
        return true;
    }();
    scratch.put("raw/animations/skeletons/man.bone_table", {reinterpret_cast<char const *>(bytes), size});
    COUNTING_SINK sink;
    KN::MessageSink *const before = KN::set_thread_message_sink(&sink);
    TOOLDATABUILDER::BONE_NAME_TABLE const table("man");
    KN::set_thread_message_sink(before);

    require(is_set && table.valid == (sink.lines == 0) && sink.lines <= 1, "one line for a table that is refused");
    require(table.valid == !table.bones.empty() && table.valid == !table.root_bone().empty(),
            "bones exactly where a table is accepted");
    std::set<KN::String> names;
    for (std::size_t i = 0; i < table.bones.size(); ++i) {
        require(table.bones[i].parent >= -1 && table.bones[i].parent < std::int32_t(i), "parents stand first");
        require(!table.bones[i].name.empty() && names.insert(table.bones[i].name).second,
                "every bone has its own name");
    }
    require(!table.valid || names.count(table.root_bone().lower()) == 1, "the root is a bone");
    return 0;
}
