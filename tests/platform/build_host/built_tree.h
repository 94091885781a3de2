// A small tree on disk with a processor of its own, built as mox builds: for tests of what a build remembers. A source
// "x.txt" becomes "x.out" in the folder that its rule names; a line "use NAME" in it takes in the file NAME beside it,
// and "look NAME" or "fold NAME" tells whether the file table has <working>/NAME, with regard to case or without.
#pragma once

#include "Plugins/Vx2/host/action_convert.h"
#include "foundation/finished_file.h"
#include "platform/build_host/action_rows.h"
#include "platform/build_host/disk_name.h"
#include "platform/build_host/session.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

class COPY_SCHEMA : public RULE_SCHEMA {
public:
    COPY_SCHEMA() : RULE_SCHEMA(QStringLiteral("Copy"), QStringLiteral("Copies texts"))
    {
        for (char const *name : {"TargetPath", "Suffix", "Unread"})
            add_property(QLatin1String(name), {});
    }
};

class TEXT_ACTION : public ACTION_CONVERT {
public:
    TEXT_ACTION(PHYSICAL_PATH const &file, PROCESSOR_INTERFACE *processor) : ACTION_CONVERT(file, processor)
    {
        set_target_extension(QStringLiteral(".out"));
    }
    QString get_name(bool) const override { return QStringLiteral("Copy ") + target_stem(); }
    // What "grow" writes is declared as soon as it is known.
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override
    {
        ACTION_CONVERT::get_affected_files(sources, targets, time, files, rules);
        PHYSICAL_PATH const grown(get_target() + ".grown");
        if (files.peek(PATHS::logical_path(grown)) != nullptr)
            targets.append(TARGET_FILE(grown, PATHS::logical_path(grown), false));
    }
    bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                 FILE_TABLE const &files) override
    {
        if (before_work)
            before_work(*this);
        QString const suffix =
            rules.get(PATHS::logical_path(from), QStringLiteral("Copy")).value(QStringLiteral("Suffix")).toString();
        std::string text;
        KN::MemFileIn in;
        in.open(disk_name(from), false);
        text.resize(in.size());
        in.read(text.data(), in.size());
        std::string made = text + suffix.toStdString();
        for (std::size_t place = text.find("use "); place != std::string::npos; place = text.find("use ", place + 1)) {
            KN::String const name = text.substr(place + 4, text.find('\n', place) - place - 4);
            KN::MemFileIn used;
            if (used.open(disk_name(from.section(QLatin1Char('/'), 0, -2) + '/') + name, false)) {
                std::string more(used.size(), 0);
                used.read(more.data(), used.size());
                made += more;
            }
        }
        for (QString const &line : QString::fromStdString(text).split('\n')) {
            LOGICAL_PATH const path("<working>/" + line.section(' ', 1));
            if (line.startsWith("look "))
                made += files.contains(path) ? '+' : '-';
            else if (line.startsWith("fold "))
                made += folded_look_up(path, files) ? '+' : '-';
        }
        KN::String error;
        bool const written = KN::write_finished_file(disk_name(to), made, error);
        if (text.find("fail") != std::string::npos)
            output_line(QStringLiteral("told to fail"), 2);
        if (text.find("forget") != std::string::npos)
            QFile::remove(to);
        if (text.find("publish") != std::string::npos && !KN::exists(disk_name(to) + ".shared"))
            KN::write_finished_file(disk_name(to) + ".shared", "shared", error);  // as a library does, unbooked
        if (text.find("grow") != std::string::npos) {
            KN::write_finished_file(disk_name(to) + ".grown", made, error);
            add_to_perforce(PHYSICAL_PATH(to + ".grown"), files, false, {});
        }
        if (text.find("extra") != std::string::npos) {
            KN::write_finished_file(disk_name(to) + ".extra", made, error);
            // Converters may join paths with a backslash.
            add_to_perforce(PHYSICAL_PATH(target_path() + '\\' + target_stem() + ".out.extra"), files, false, {});
        }
        return written;
    }
    static inline std::function<void(TEXT_ACTION &)> before_work;

private:
    static bool folded_look_up(LOGICAL_PATH const &path, FILE_TABLE const &files)
    {
        for (auto entry = files.begin(); entry != files.end(); ++entry)
            if (entry.key().compare(path, Qt::CaseInsensitive) == 0) {
                note_look_up(entry.key(), true);
                return true;
            }
        note_folded_look_up(path);
        return false;
    }
};

class TEXT_PROCESSOR : public COMPLEX_ASSET_PROCESSOR {
public:
    TEXT_PROCESSOR(int version) { setup_dc("texts", version); }
    QString get_name() const override { return QStringLiteral("texts"); }
    QString processor_prefix() const override { return QStringLiteral("text_"); }
    QVector<ACTION_INTERFACE *> plan_actions(FILE_TABLE const &files, RULE_CACHE const &rules) override
    {
        QVector<ACTION_INTERFACE *> actions;
        bool const has_rows =
            rules.get_global(QStringLiteral("Copy")).value(QStringLiteral("Suffix")).toString() == "rows";
        for (auto entry = files.begin(); entry != files.end(); ++entry) {
            RULE const rule = rules.get(entry.key(), QStringLiteral("Copy"));
            if (!entry.key().endsWith(QLatin1String(".txt")) || !rule.exists)
                continue;
            auto *const action = new TEXT_ACTION(entry.value()->physical, this);
            QString const target = rule.value(QStringLiteral("TargetPath")).toString();
            if (target == "root")
                action->set_target_path(PATHS::target_working_data(entry.value()->physical));
            else if (target != "beside")
                action->set_target_path(PATHS::working_data() + '/' + target);
            actions += action;
            if (!has_rows)
                continue;
            DB_ROW row;
            row[QStringLiteral("key")] = {0, true, true};
            row[QStringLiteral("filename")] = {action->target_stem()};
            QVector<ACTION_INTERFACE *> row_actions;
            create_db_actions({{QStringLiteral("texts"), {row}, {true, true, true, true}}}, action->target_stem(), true,
                              row_actions, files, true);
            for (ACTION_INTERFACE *gate : waiting_actions) {
                action->pull(gate);
                gate->add_dependency(action, false);
            }
            actions += waiting_actions + row_actions;
            waiting_actions.clear();
        }
        return actions;
    }
};

class BUILT_TREE : public testing::Test {
protected:
    struct BUILD {
        QStringList run;  // stems, in list order
        QStringList reasons;
        QStringList gone;
        QStringList lines;  // of all actions that ran, level 1 and above
        QStringList warnings;
        std::uint64_t contents_read = 0;
        bool good = false;
    };

    void SetUp() override
    {
        write("mox.toml", "");
        write("raw_data/rules.toml", "[Copy]\nTargetPath = \"made\"\n");
    }

    QString path(QString const &name) const { return QDir(folder.path()).filePath(name); }
    void write(QString const &name, std::string const &text)
    {
        KN::String error;
        QDir().mkpath(path(name).section(QLatin1Char('/'), 0, -2));
        ASSERT_TRUE(KN::write_finished_file(disk_name(path(name)), text, error)) << error;
    }
    std::string read(QString const &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "(none)";
    }
    // Another time of last change, the same bytes.
    void touch(QString const &name)
    {
        std::filesystem::path const file(path(name).toStdString());
        std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::hours(1));
    }

    // Everything that `mox build --jobs 1 --keep-going` does. `until`: runs instead of the plan's end, as a kill does.
    BUILD build(bool is_killed = false)
    {
        BUILD result;
        SESSION session;
        EXPECT_TRUE(session.open(folder.path(), {})) << session.faults().join('\n').toStdString();
        EXPECT_TRUE(session.take_lock() && session.open_record() && session.list_files())
            << session.faults().join('\n').toStdString();
        TEXT_PROCESSOR processor(version);
        session.make_plan({&processor});
        session.make_state();
        std::vector<QString> const reasons = choose_actions(session.plan(), session.state());
        QVector<PLANNED_ACTION const *> chosen;
        for (PLANNED_ACTION const &action : session.plan().actions)
            if (!reasons[std::size_t(action.index)].isEmpty()) {
                result.run += action.action->get_name(false).section(' ', 1);
                result.reasons += reasons[std::size_t(action.index)];
                chosen += &action;
            }
        if (is_killed) {
            session.state().run_begins(chosen);
        } else {
            RUN_OPTIONS options;
            options.jobs = 1;
            options.keep_going = true;
            result.good =
                run_plan(session.plan(), reasons, session.files(), session.rules(), options, session.state(), nullptr)
                    .good();
            for (PLANNED_ACTION const *action : chosen)
                for (ACTION_LINE const &line : action->action->lines())
                    if (line.level > 0)
                        result.lines += line.text;
        }
        result.contents_read = session.state().contents_read();
        result.gone = session.state().left_overs().products;
        result.warnings = session.warnings();
        return result;
    }

    QTemporaryDir folder;
    int version = 1;  // of the processor
    COPY_SCHEMA schema;
};
