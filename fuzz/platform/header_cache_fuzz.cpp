// The engine's cache of model headers on hostile bytes: what it knows of the model "m" is walked. Seeds:
// platform_seeds.
#include "Plugins/Vx2/host/engine.h"
#include "foundation/messages.h"
#include "fuzz_kit.h"
#include "platform/build_host/project.h"

#include <memory>

using namespace FUZZ;

namespace {

struct SILENCE final : KN::MessageSink {
    void message(KN::String const &, int) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *bytes, std::size_t size)
{
    static SCRATCH const scratch;
    static SILENCE silence;
    static KN::String const model = [] {
        KN::set_thread_message_sink(&silence);
        QString const root = QString::fromStdString(scratch.folder.string());
        set_current_roots({root, root, root, root});
        return KN::String(scratch.put("m", "no model, so that its header comes from the cache"));
    }();
    scratch.put("rigid_db.bin", {reinterpret_cast<char const *>(bytes), size});
    std::unique_ptr<KESTREL::ENGINE> const engine(KESTREL::make_engine(true, true, false));
    KESTREL::RIGID_MODEL_SERVICE &service = *engine->rigid_model_service();
    unsigned const handle = service.open(service.HEADER_ONLY, model, nullptr, false);
    unsigned const levels = service.level_count(handle);
    require((handle == service.INVALID) == (levels == 0), "a model has at least one level");
    for (unsigned i = 0; i < levels; ++i)
        service.level_assets(handle, i);
    service.skeleton_name(handle);
    return 0;
}
