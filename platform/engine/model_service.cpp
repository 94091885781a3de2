#include "platform/engine/model_service.h"

#include "foundation/messages.h"
#include "platform/engine/render_model.h"

#include <algorithm>

namespace KESTREL {

namespace {

// Between the one byte a character that callers have and the UTF-8 of disks and models.
KN::String from_caller(KN::String const &text) { return KN::to_utf8(KN::must_fix_string_widen(text)); }
KN::String for_caller(KN::String const &text) { return KN::must_fix_string_narrow(KN::from_utf8(text)); }

}  // namespace

MODEL_SERVICE::MODEL_SERVICE(KN::String root) : data_root(std::move(root)), cache(data_root) {}

unsigned MODEL_SERVICE::open(unsigned flags, KN::String const &name, void *, bool)
{
    auto model = std::make_unique<OPENED>();
    model->path = flags == HEADER_ONLY ? name : path_of(from_caller(name), data_root);
    KN::String const short_name = name_of(model->path, data_root);
    if (flags != HEADER_ONLY || !cache.find(model->path, short_name, model->head)) {
        KN::String error;
        if (!GLTF::read_model(model->path, model->head, nullptr, error)) {
            KN::message(KN::MESSAGE_ERROR, error);
            return INVALID;
        }
    }
    if (flags == HEADER_ONLY)
        remember_header(short_name, model->head);
    auto const free = std::find(models.begin(), models.end(), nullptr);
    unsigned const handle = unsigned(free - models.begin());
    if (free == models.end())
        models.push_back(std::move(model));
    else
        *free = std::move(model);
    return handle;
}

MODEL_SERVICE::OPENED const *MODEL_SERVICE::opened(unsigned handle) const
{
    return handle < models.size() ? models[handle].get() : nullptr;
}

unsigned MODEL_SERVICE::level_count(unsigned handle)
{
    OPENED const *const model = opened(handle);
    return model ? unsigned(model->head.levels.size()) : 0;
}

KN::String MODEL_SERVICE::skeleton_name(unsigned handle)
{
    OPENED const *const model = opened(handle);
    return model ? for_caller(model->head.skeleton) : KN::String();
}

// One record a mesh: its textures.
KN_STD::VECTOR<LEVEL_ASSET> MODEL_SERVICE::level_assets(unsigned handle, unsigned index)
{
    KN_STD::VECTOR<LEVEL_ASSET> assets;
    OPENED const *const model = opened(handle);
    if (model == nullptr || index >= model->head.levels.size())
        return assets;
    for (GLTF::MODEL_HEAD::MESH_USE const &use : model->head.levels[index]) {
        LEVEL_ASSET &asset = assets.emplace_back();
        for (int const material : use.materials) {
            GLTF::MATERIAL const &made_of = model->head.materials[std::size_t(material)];
            for (GLTF::TEXTURE const &texture : {made_of.diffuse, made_of.normal})
                if (!texture.uri.empty())
                    asset.paths.push_back(for_caller(name_from(model->path, model->head, texture.uri, data_root)));
        }
    }
    return assets;
}

void MODEL_SERVICE::close(unsigned handle)
{
    if (handle < models.size())
        models[handle].reset();
}

}  // namespace KESTREL
