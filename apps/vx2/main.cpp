// vx2: looks into, checks, imports, exports and upgrades scene files.

#include "apps/vx2/commands.h"
#include "foundation/messages.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

// What the libraries say while they work. Errors come back as results, and are printed there once.
class WARNINGS_TO_STANDARD_ERROR final : public KN::MessageSink {
public:
    void message(KN::String const &line, int level) override
    {
        if (level < KN::MESSAGE_ERROR)
            std::fprintf(stderr, "%s%s\n", level == KN::MESSAGE_WARNING ? "warning: " : "", line.c_str());
    }
};

struct COMMAND_LINE {
    KN::String file, target, skeleton;
    float time = 0;
    bool prepare = false, references = false;
    IMPORT_REQUEST import;
    std::uint64_t memory_mib = 0;
};

// The file arguments that every command has.
CLI::App *add_command(CLI::App &app, COMMAND_LINE &line, char const *name, char const *description,
                      char const *file_help, char const *target_help)
{
    CLI::App *const command = app.add_subcommand(name, description);
    command->add_option(target_help != nullptr ? "IN" : "FILE", line.file, file_help)->required();
    if (target_help != nullptr)
        command->add_option("OUT", line.target, target_help)->required();
    return command;
}

}  // namespace

int main(int count, char **arguments)
{
    if (count > 1 && std::strcmp(arguments[1], import_worker_word) == 0)
        return run_import_worker(count - 2, arguments + 2);

    WARNINGS_TO_STANDARD_ERROR sink;
    KN::set_process_message_sink(&sink);

    COMMAND_LINE line;
    CLI::App app("Looks into, checks, imports, exports and upgrades scene files.", "vx2");
    app.require_subcommand(0, 1);  // a misspelt command is then named
    app.set_version_flag("--version", "vx2 " MOX_VERSION);
    CLI::App *const info_command =
        add_command(app, line, "info", "Says in a few lines what is in a scene.", "scene file", nullptr);
    CLI::App *const dump_command =
        add_command(app, line, "dump", "Prints a whole scene as JSON.", "scene file", nullptr);
    CLI::Option *const time = dump_command->add_option("--time", line.time, "seek to this time, in seconds");
    time->check([](std::string const &given) {
        float time_given = 0;
        bool const finite = CLI::detail::lexical_cast(given, time_given) && std::isfinite(time_given);
        return finite ? std::string() : given + " is not a number of seconds";
    });
    dump_command->add_flag("--prepare", line.prepare,
                           "merge duplicate vertices and build frames first, as a build does");
    CLI::App *const validate_command = add_command(
        app, line, "validate", "Looks for faults in a scene; fails if there are any.", "scene file", nullptr);
    CLI::App *const import_command =
        add_command(app, line, "import", "Makes a scene and its textures from an artist's model.",
                    "model: glTF, FBX, Collada, OBJ, ...", "scene file to be written");
    CLI::Option *const clip =
        import_command->add_option("--clip", line.import.clip, "the animation to take; the first by default");
    import_command->add_flag("--all-clips", line.import.all_clips, "a scene OUT_CLIP.vx2 for each animation")
        ->excludes(clip);
    import_command->add_option("--memory-limit", line.memory_mib, "of the importer's own process, in MiB")
        ->check(CLI::Range(1, 1 << 20));
    import_command->add_option("--time-limit", line.import.limits.seconds, "of the importer's own process, in seconds")
        ->check(CLI::Range(1, 86400));
    CLI::App *const export_command =
        add_command(app, line, "export", "Writes a scene, or a built animation (.anim), as binary glTF.",
                    "scene file or animation", "glb file to be written");
    export_command->add_option("--skeleton", line.skeleton, "reference pose (.anim) of the animation's skeleton");
    CLI::App *const upgrade_command = add_command(app, line, "upgrade", "Writes a scene in the newest version.",
                                                  "scene file", "scene file to be written");
    upgrade_command->add_flag("--references", line.references, "write the scenes that it refers to as well");
    CLI::App *const clean_command =
        add_command(app, line, "clean", "Merges duplicate vertices, builds frames, and writes the scene.", "scene file",
                    "scene file to be written");
    CLI::App *const anim_command =
        add_command(app, line, "anim", "Says what is in a built animation.", "animation file (.anim)", nullptr);
    CLI::App *const bones_command = add_command(app, line, "bones", "Writes the skeleton table of a scene.",
                                                "scene file", "bone table to be written");

    try {
        app.parse(count, arguments);
    } catch (CLI::ExtrasError const &error) {
        if (app.get_subcommands().empty() && app.remaining().front()[0] != '-')
            std::fprintf(stderr, "vx2: there is no command '%s'; 'vx2 --help' lists them\n",
                         KN::printable(app.remaining().front()).c_str());
        else
            app.exit(error);
        return 2;
    } catch (CLI::ParseError const &error) {
        return app.exit(error) == 0 ? 0 : 2;
    }

    if (info_command->parsed())
        return show_info(line.file);
    if (dump_command->parsed())
        return dump(line.file, time->count() != 0 ? std::optional(line.time) : std::nullopt, line.prepare);
    if (validate_command->parsed())
        return validate(line.file);
    if (import_command->parsed()) {
        line.import.model = line.file;
        line.import.target = line.target;
        line.import.worker = own_program();
        if (line.memory_mib != 0)
            line.import.limits.memory = line.memory_mib << 20;
        return import(line.import);
    }
    if (export_command->parsed())
        return export_glb(line.file, line.skeleton, line.target);
    if (upgrade_command->parsed())
        return upgrade(line.file, line.target, line.references);
    if (clean_command->parsed())
        return clean(line.file, line.target);
    if (anim_command->parsed())
        return show_animation(line.file);
    if (bones_command->parsed())
        return make_bone_table(line.file, line.target);
    std::fputs("vx2: which command? 'vx2 --help' lists them\n", stderr);
    return 2;
}
