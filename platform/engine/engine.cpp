// The engine behind the host's interface. It renders without a screen; a view is a film and what was asked of it.

#include "Plugins/Vx2/host/engine.h"

#include "Plugins/Vx2/host/action_engine.h"
#include "Plugins/Vx2/host/paths.h"
#include "foundation/file.h"
#include "foundation/messages.h"
#include "platform/engine/model_service.h"
#include "platform/engine/renderer.h"
#include "platform/texture/tga.h"
#include "support/camera/camera.h"

#include <algorithm>
#include <deque>

namespace KESTREL {

KN::String get_season_shortname(int index)
{
    static constexpr char const *names[] = {"spring", "summer", "autumn", "winter"};
    return index >= 0 && index < 4 ? names[index] : "";
}

namespace {

constexpr unsigned capture_samples = 16;

class OFFSCREEN_VIEW final : public VIEW {
public:
    void set_clear(VIEW_CLEAR const &values) override { clear = values; }
    // There is no screen that x and y could be a place on.
    void set_viewport(int, int, int new_width, int new_height) override
    {
        width = new_width;
        height = new_height;
    }
    void set_camera(SUPPORT::CAMERA *used) override { camera = used; }

    void save_image(CAPTURE_REQUEST const &request) override
    {
        KN::String error;
        if (request.kind < CAPTURE_REQUEST::NORMAL || request.kind > CAPTURE_REQUEST::HEIGHT)
            error = request.file_name + ": there is no picture of kind " + std::to_string(request.kind);
        else if (!has_frame)
            error = request.file_name + ": no frame was rendered";
        else if (request.width != film.width() || request.height != film.height())
            error = request.file_name + ": the frame measures " + std::to_string(film.width()) + " x " +
                    std::to_string(film.height()) + " pixels, not " + std::to_string(request.width) + " x " +
                    std::to_string(request.height);
        else
            write_tga(film.picture(request.kind), KN::disk_path(KN::must_fix_string_widen(request.file_name)), error);
        if (!error.empty())
            KN::message(KN::MESSAGE_ERROR, error);
    }

    void forget_frame() { has_frame = false; }

    void render(RAY_SCENE const &scene, unsigned samples)
    {
        has_frame = false;
        if (camera == nullptr || width < 1 || height < 1 || width > int(PICTURE::largest) ||
            height > int(PICTURE::largest)) {
            KN::message(KN::MESSAGE_ERROR, "a frame needs a camera and a viewport of 1 to " +
                                               std::to_string(PICTURE::largest) + " pixels");
            return;
        }
        film.start(unsigned(width), unsigned(height), clear);
        has_frame = KESTREL::render(scene, *camera, samples, film);
    }

private:
    VIEW_CLEAR clear = {};
    int width = 0, height = 0;
    SUPPORT::CAMERA *camera = nullptr;
    FILM film;
    bool has_frame = false;
};

class OFFLINE_ENGINE final : public ENGINE {
public:
    OFFLINE_ENGINE(bool mount_data, bool start_services, bool open_view)
    {
        KN::String const root = mount_data ? KN::String(PATHS::working_data().toStdString()) : KN::String();
        data_root = root;
        if (start_services)
            service = std::make_unique<MODEL_SERVICE>(root);
        if (open_view)
            stage = std::make_unique<STAGE>();
    }

    RIGID_MODEL_SERVICE *rigid_model_service() override { return service.get(); }
    VIEW *view() override { return stage ? &stage->view : nullptr; }

    void recreate_scene() override
    {
        if (!stage)
            return;
        stage->scene.clear();
        stage->models.clear();
        stage->numbers.clear();
        stage->view.forget_frame();
    }

    void set_mode(int wanted) override { mode = wanted; }

    int load_model(KN::String const &name, int, TEXTURE_NAME_MAPPER *mapper) override
    {
        if (!stage)
            return INVALID_MODEL;
        RENDER_MODEL &model = stage->models.emplace_back();
        unsigned const number = model.load(name, data_root, mapper) ? stage->scene.add_model(model) : RAY_HIT::none;
        if (number == RAY_HIT::none) {
            stage->models.pop_back();
            return INVALID_MODEL;
        }
        stage->numbers.push_back(number);
        return int(stage->numbers.size() - 1);
    }

    void bounding_box(int model, float out[6]) override
    {
        std::fill_n(out, 6, 0.0f);
        if (is_valid(model))
            std::copy_n(stage->models[std::size_t(model)].box, 6, out);
    }

    void add_instance(int model, float const matrix[12]) override
    {
        bool const is_finite = std::all_of(matrix, matrix + 12, [](float value) { return std::isfinite(value); });
        if (is_valid(model) && is_finite)
            stage->scene.add_instance(stage->numbers[std::size_t(model)], matrix);
    }

    void begin_frame() override
    {
        if (stage)
            stage->scene.commit();
    }

    void end_frame() override
    {
        if (stage)
            stage->view.render(stage->scene, mode == CAPTURE ? capture_samples : 1);
    }

private:
    // What a view needs: not there without one.
    struct STAGE {
        OFFSCREEN_VIEW view;
        std::deque<RENDER_MODEL> models;  // keep their addresses
        std::vector<unsigned> numbers;    // in the scene
        RAY_SCENE scene;                  // goes before the models that it refers to
    };

    bool is_valid(int model) const { return stage && model >= 0 && std::size_t(model) < stage->numbers.size(); }

    KN::String data_root;
    std::unique_ptr<MODEL_SERVICE> service;
    std::unique_ptr<STAGE> stage;
    int mode = PREVIEW;
};

// Engines can be started for as long as this library is loaded.
struct REGISTRATION {
    REGISTRATION() { ACTION_INIT_KESTREL::set_engine_maker(make_engine); }
    ~REGISTRATION() { ACTION_INIT_KESTREL::set_engine_maker(nullptr); }
} const registration;

}  // namespace

ENGINE *make_engine(bool mount_data, bool start_services, bool open_view)
{
    return new OFFLINE_ENGINE(mount_data, start_services, open_view);
}

}  // namespace KESTREL
