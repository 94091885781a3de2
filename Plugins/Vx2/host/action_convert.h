// ACTION_CONVERT: base of the actions that turn one source file into one main target.
#pragma once

#include "Plugins/Vx2/host/action.h"

// The target's path is target_path() + "/" + target_stem() + target_extension(). Unless set, these are the folder of
// the source, its file name without the last "."-section, and "." with that section; so the target is at first the
// source itself. An empty extension gives the path of a folder. Texts are kept as given.
class HOST_API ACTION_CONVERT : public ACTION_TDB {
public:
    ACTION_CONVERT(PHYSICAL_PATH const &source_file, PROCESSOR_INTERFACE *planned_by);

    QString get_name(bool with_source) const override;  // "Convert", the logical source behind it
    // The files of get_source_files, and the target unless it is the source.
    void get_affected_files(QVector<LOGICAL_PATH> &sources, QVector<TARGET_FILE> &targets, qint64 &time,
                            FILE_TABLE const &files, RULE_CACHE const &rules) const override;
    // Fails with the error that the action carries, if any. Else makes the target's folder, converts, and books the
    // target if it is a regular file and not temporary. FAILED if convert answers false or an error line came out.
    STATUS run(FILE_TABLE const &files, RULE_CACHE const &rules) override;

    virtual void get_source_files(QVector<LOGICAL_PATH> &sources, FILE_TABLE const &files) const;  // the source
    virtual bool is_target_temporary() const;
    virtual bool is_target_binary() const;  // true unless overridden
    // The work. False, with an error line, if it failed.
    virtual bool convert(PHYSICAL_PATH const &from, PHYSICAL_PATH const &to, RULE_CACHE const &rules,
                         FILE_TABLE const &files);

    void set_target_path(QString const &folder) { target_folder = folder; }
    void set_target_extension(QString const &with_dot) { target_suffix = with_dot; }
    void set_target_temporary(bool temporary) { is_temporary = temporary; }
    PHYSICAL_PATH get_target() const;

    PHYSICAL_PATH const &source() const { return source_path; }
    QString const &target_path() const { return target_folder; }
    QString const &target_stem() const { return target_name; }
    QString const &target_extension() const { return target_suffix; }

private:
    PHYSICAL_PATH source_path;
    QString target_folder;
    QString target_name;
    QString target_suffix;
    bool is_temporary = false;
};
