// MODEL_SERVICE: the engine's service that opens finished models to look at their heads. Geometry and textures are not
// read. One thread at a time.
#pragma once

#include "Plugins/Vx2/host/engine.h"
#include "platform/engine/header_cache.h"

#include <memory>

namespace KESTREL {

class MODEL_SERVICE final : public RIGID_MODEL_SERVICE {
public:
    // `root`: what names are below; empty: nothing is.
    explicit MODEL_SERVICE(KN::String root);

    unsigned open(unsigned flags, KN::String const &name, void *context, bool wait) override;
    unsigned level_count(unsigned handle) override;
    KN::String skeleton_name(unsigned handle) override;
    KN_STD::VECTOR<LEVEL_ASSET> level_assets(unsigned handle, unsigned index) override;
    void close(unsigned handle) override;

private:
    struct OPENED {
        KN::String path;
        GLTF::MODEL_HEAD head;
    };
    OPENED const *opened(unsigned handle) const;

    KN::String data_root;
    HEADER_CACHE_FILE cache;
    std::vector<std::unique_ptr<OPENED>> models;  // by handle; null: free
};

}  // namespace KESTREL
