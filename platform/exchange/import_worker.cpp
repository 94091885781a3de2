// The child's side of an import. Arguments: model, folder for the results, stem of their names, "first", "clip NAME" or
// "all". Standard output: lines of a word, a tab and a text:
//
//     warning TEXT     clip NAME     texture FILE     scene FILE CLIP     error TEXT
//
// with control bytes of texts shown as escapes; FILE is a name within the folder. A last line "done" tells that nothing
// is missing.

#include "platform/exchange/gltf_check.h"
#include "platform/exchange/import.h"
#include "platform/exchange/import_scene.h"
#include "platform/exchange/scene_file.h"
#include "scene/scene.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cstdio>
#include <exception>
#include <new>
#include <string_view>

namespace {

void tell(char const *word, KN::String const &text) { std::printf("%s\t%s\n", word, KN::printable(text).c_str()); }

int fail(KN::String const &text)
{
    tell("error", text);
    return 1;
}

KN::String clip_name(aiAnimation const &clip, unsigned number)
{
    return clip.mName.length != 0 ? KN::String(clip.mName.C_Str()) : KN::String("clip" + std::to_string(number + 1));
}

// The clips to be made, -1 for none; empty if the wanted one is not there.
KN_STD::VECTOR<int> chosen_clips(aiScene const &source, std::string_view choice, KN::String const &wanted)
{
    KN_STD::VECTOR<int> chosen;
    for (unsigned i = 0; i < source.mNumAnimations; ++i)
        if (choice == "all" || (choice == "first" && i == 0) ||
            (choice == "clip" && chosen.empty() && clip_name(*source.mAnimations[i], i) == wanted))
            chosen.push_back(int(i));
    if (source.mNumAnimations == 0 && choice != "clip")
        chosen.push_back(-1);
    return chosen;
}

// What to name instead of a clip that is not there.
KN::String names_of_clips(aiScene const &source)
{
    constexpr unsigned most_named = 20;
    KN::String names;
    for (unsigned i = 0; i < source.mNumAnimations && i < most_named; ++i)
        names += (i == 0 ? "it has '" : ", '") + clip_name(*source.mAnimations[i], i) + "'";
    if (source.mNumAnimations > most_named)
        names += " and " + std::to_string(source.mNumAnimations - most_named) + " more";
    return source.mNumAnimations == 0 ? KN::String("it has none at all") : names;
}

int import_into(KN::String const &model, KN::String const &folder, KN::String const &stem, std::string_view choice,
                KN::String const &wanted)
{
    IMPORT_NOTES notes;
    KN::String error;
    if (is_gltf_path(model) && !check_gltf(model, notes, error))
        return fail(error);

    Assimp::Importer importer;
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
    if (importer.ReadFile(model, aiProcess_Triangulate) == nullptr) {
        KN::String reason(importer.GetErrorString());
        if (reason.find("bad_alloc") != KN::String::npos)
            throw std::bad_alloc();
        while (!reason.empty() && (reason.back() == '.' || reason.back() == '\n' || reason.back() == ' '))
            reason.pop_back();
        return fail((reason.empty() ? KN::String("the importer does not understand this file") : reason) +
                    "; check that it is a model, and export it again");
    }
    aiScene &source = const_cast<aiScene &>(*importer.GetScene());
    if (source.mRootNode == nullptr || (source.mFlags & AI_SCENE_FLAGS_INCOMPLETE) != 0)
        return fail("the importer could not read all of it; export the model again");

    for (unsigned i = 0; i < source.mNumAnimations; ++i)
        tell("clip", clip_name(*source.mAnimations[i], i));
    KN_STD::VECTOR<int> const clips = chosen_clips(source, choice, wanted);
    if (clips.empty())
        return fail("there is no animation '" + wanted + "' in it; " + names_of_clips(source));

    double const unit = settle_space(source);
    IMPORT_TEXTURES textures(source, model, folder, stem, notes);
    std::size_t const slash = model.find_last_of("/\\");
    for (int const clip : clips) {
        VEX2_LOADER::VEX2 scene;
        scene.header.source_text =
            KN::from_utf8(slash == std::string::npos ? model : KN::String(model.substr(slash + 1)));
        KN::String const file = std::to_string(clip < 0 ? 0 : clip) + ".vx2";
        if (!build_scene(source, clip, unit, textures, scene, notes, error) ||
            !write_scene(folder + "/" + file, scene, error))
            return fail(error);
        KN::String line = file;
        if (clip >= 0)
            line.append(" ").append(clip_name(*source.mAnimations[clip], unsigned(clip)));
        tell("scene", line);
    }
    for (KN::String const &file : textures.files())
        tell("texture", file);
    for (KN::String const &line : notes.all())
        tell("warning", line);
    tell("done", "");
    return std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace

int run_import_worker(int count, char const *const *arguments)
{
    if (count < 4)
        return 2;
    try {
        return import_into(arguments[0], arguments[1], arguments[2], arguments[3],
                           count > 4 ? KN::String(arguments[4]) : KN::String());
    } catch (std::bad_alloc const &) {
        return fail("the import needs more memory than it may have; simplify the model or raise the memory limit");
    } catch (std::exception const &exception) {
        return fail("the importer gave up: " + std::string(exception.what()) + "; export the model again");
    }
}
