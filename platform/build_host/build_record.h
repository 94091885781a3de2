// The build record: what each action of earlier builds read, depended on and left behind, in one SQLite file below the
// working tree. All rows are read at once into two arrays when the record opens, since a build with nothing to do asks
// for every one of them; texts (paths, rule values, output lines) stay in the file until somebody asks why.
//
// Paths are known by the hash of their logical form (text_id), so that a comparison touches no text. What is put goes
// into a queue and from there to the file in few transactions: a killed build loses at most the last ones, and the
// actions that they concern are then still marked as owed.
//
// SQLite is called directly instead of through Qt Sql: reading 100,000 rows as variants would cost more than the rest
// of such a build.
#pragma once

#include "platform/build_host/api.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

struct sqlite3;

// Whatever has a text is known by its hash: 64 bits, as good as unique among the millions of paths of a tree.
BUILD_HOST_API std::uint64_t text_id(QString const &text);

// A file as an action found it. `hash` is that of the contents, and counts only if the file was there.
struct FILE_STAMP {
    static constexpr std::int64_t absent = -1;

    std::int64_t size = absent;  // bytes
    std::int64_t time = 0;       // last change, nanoseconds since 1970
    std::uint64_t hash = 0;
};

struct RECORDED_FILE {
    // In place of a size: the file was not opened, only its path looked up in the file table. Planned files stand there
    // too.
    enum LOOK_UP_SIZE : std::int64_t {
        LISTED = -3,
        UNLISTED = -4,
        UNLISTED_FOLDED = -5,  // in no case of its letters; the path is in lower case
    };

    std::uint64_t path;  // text_id of the logical path
    FILE_STAMP stamp;

    static bool is_look_up(FILE_STAMP const &stamp) { return stamp.size <= LISTED; }
};

// The values that an action got from a rule while it ran: ids of what it asked for and of what came back.
struct RECORDED_READING {
    std::uint64_t question;
    std::uint64_t answer;
};

struct RECORDED_TARGET {
    enum FLAG : std::uint64_t {
        STOOD = 1,    // it was there after the last success
        WRITTEN = 2,  // the build made or changed it, as against a file that it found and left alone
        AWAITED = 4,  // it was not there when the action that is owed was chosen to run
    };
    static constexpr std::uint64_t all_flags = 0xff;

    std::uint64_t path;
    // FLAGs in the low 8 bits. Above them what identifies the file's state when the build wrote it (written_state), so
    // that a later change by others is seen; 0 if that is not known.
    std::uint64_t flags;
};

// One row, as views of the record's memory or of the caller's.
struct RECORD_ROW {
    enum FLAG : std::uint32_t {
        OWED = 1,  // chosen to run and not brought to a good end since
    };
    std::uint32_t flags = 0;
    std::uint64_t signature = 0;
    std::uint64_t account = 0;  // id of a text that tells what the signature was made of
    std::span<RECORDED_FILE const> files;
    std::span<RECORDED_READING const> readings;
    std::span<RECORDED_TARGET const> targets;
};

// What a row means to people, and what its action said when it last ran.
struct RECORD_TEXTS {
    QString action_class;
    QString source;  // logical; empty for an action without a source
    QString target;
    QString output;  // lines, each "LEVEL text", with their ends
};

// What a layer above made of a file that it read, to be taken instead as long as size and time of the file stay.
struct KEPT_FILE {
    QString name;  // the layer's own
    std::int64_t size = 0;
    std::int64_t time = 0;
    QByteArray made;  // empty: nothing is kept any more
};

// Texts of the last two kinds are read when the record opens.
enum class TEXT_KIND {
    TOLD,          // for people only
    PATH,          // a logical path
    OUTSIDE_PATH,  // a path that lies below none of the roots, so that only the record knows where to look for it
    QUESTION,      // what was asked of a rule
};

class BUILD_HOST_API BUILD_RECORD {
public:
    BUILD_RECORD() = default;
    ~BUILD_RECORD();
    BUILD_RECORD(BUILD_RECORD const &) = delete;
    BUILD_RECORD &operator=(BUILD_RECORD const &) = delete;

    // Opens the file, or makes it; its folder must stand. A damaged one is begun anew, and `note` says so. False, with
    // the reason in `note`, if no record can be kept there.
    bool open(QString const &file, QString &note);
    void close();

    // The row of `key` as it was when the record opened; null if there is none or if it is damaged. The views hold
    // until `close`.
    RECORD_ROW const *find(std::uint64_t key) const;
    std::size_t size() const { return rows.size(); }
    template <class VISIT>  // void(std::uint64_t key, RECORD_ROW const &), in ascending order of keys
    void for_each(VISIT visit) const
    {
        for (std::size_t i = 0; i < rows.size(); ++i)
            visit(keys[i], rows[i]);
    }

    // Queues a row, replacing that of the same key. From any thread.
    void put(std::uint64_t key, RECORD_ROW const &row, RECORD_TEXTS const &texts);
    // The same without a change of the texts.
    void put_state(std::uint64_t key, RECORD_ROW const &row);
    // Queues the text behind an id that a queued row uses. From any thread.
    void put_text(std::uint64_t id, QString const &text, TEXT_KIND kind);
    void remove(std::uint64_t key);
    // Queues what is kept of a file. From any thread.
    void keep(KEPT_FILE file);
    // All that the file holds. From any thread; slow.
    std::vector<KEPT_FILE> kept_files() const;
    // Writes the queue in one transaction. False with the reason in `fault`.
    bool flush(QString &fault);

    // From the file, for people: slow. Empty if unknown.
    QString text(std::uint64_t id) const;
    RECORD_TEXTS texts(std::uint64_t key) const;
    // All texts of one of the last two kinds.
    std::unordered_map<std::uint64_t, QString> const &outside_paths() const { return outside; }
    std::unordered_map<std::uint64_t, QString> const &questions() const { return asked; }

private:
    struct QUEUED_ROW {
        std::uint64_t key;
        std::string bytes;  // empty: remove
        RECORD_TEXTS texts;
        bool has_texts;
    };
    struct QUEUED_TEXT {
        std::uint64_t id;
        QString text;
        TEXT_KIND kind;
    };

    enum class OPENED { GOOD, DAMAGED, REFUSED };

    OPENED open_file(QString const &file, QString &fault);
    OPENED read_rows(QString &fault);
    bool execute(char const *statement, QString &fault);

    sqlite3 *database = nullptr;
    std::vector<std::uint64_t> memory;  // the rows' arrays, one after another
    std::vector<std::uint64_t> keys;    // ascending
    std::vector<RECORD_ROW> rows;       // beside keys
    std::vector<std::uint32_t> slots_of_keys;
    std::unordered_map<std::uint64_t, QString> outside, asked;

    std::mutex queue_lock;
    std::vector<QUEUED_ROW> queued_rows;
    std::vector<QUEUED_TEXT> queued_texts;
    std::vector<KEPT_FILE> queued_files;
    std::unordered_set<std::uint64_t> texts_put;  // of this process; most paths come again and again
    mutable std::mutex file_lock;                 // one flush at a time
};
