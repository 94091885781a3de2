// The file has four tables: `action` with one blob a key, read whole at every start; `told` with an action's texts;
// `text` with the text behind each id; `kept` with what other layers made of files. A blob of `action` is an array of
// 64-bit words, little-endian:
//
//     checksum of the rest, signature, account, flags, number of files, of readings, of targets,
//     files { path, size, time, hash }.., readings { question, answer }.., targets { path, flags }..

#include "platform/build_host/build_record.h"

#include <QtCore/QFile>

#include <sqlite3.h>
#include <xxhash.h>

#include <bit>
#include <cstring>

static_assert(int(TEXT_KIND::OUTSIDE_PATH) == 2 && int(TEXT_KIND::QUESTION) == 3);  // the numbers in `schema`
static_assert(std::endian::native == std::endian::little && sizeof(RECORDED_FILE) == 32 &&
              sizeof(RECORDED_READING) == 16 && sizeof(RECORDED_TARGET) == 16);

namespace {

constexpr int application_mark = 0x4d4f5852;  // "MOXR"
constexpr int format_version = 2;

constexpr std::size_t head_words = 7;

constexpr char schema[] =
    "PRAGMA page_size = 16384;"
    "PRAGMA journal_mode = WAL;"
    "BEGIN IMMEDIATE;"
    "CREATE TABLE action(key INTEGER PRIMARY KEY, state BLOB NOT NULL);"
    "CREATE TABLE told(key INTEGER PRIMARY KEY, class TEXT, source TEXT, target TEXT, output TEXT);"
    "CREATE TABLE text(id INTEGER PRIMARY KEY, text TEXT NOT NULL, kind INTEGER NOT NULL);"
    "CREATE TABLE kept(name TEXT PRIMARY KEY, size INTEGER, time INTEGER, made BLOB) WITHOUT ROWID;"
    "CREATE INDEX text_to_read ON text(id) WHERE kind >= 2;"
    "PRAGMA application_id = 1297045586;"  // application_mark
    "PRAGMA user_version = 2;"             // format_version
    "COMMIT";
static_assert(application_mark == 1297045586 && format_version == 2);

// A statement for as long as a scope.
class STATEMENT {
public:
    STATEMENT(sqlite3 *database, char const *text) { sqlite3_prepare_v2(database, text, -1, &handle, nullptr); }
    ~STATEMENT() { sqlite3_finalize(handle); }
    STATEMENT(STATEMENT const &) = delete;
    STATEMENT &operator=(STATEMENT const &) = delete;

    int step() { return handle != nullptr ? sqlite3_step(handle) : SQLITE_ERROR; }
    // Runs to its end, ready for the next values.
    int run()
    {
        int const result = step();
        sqlite3_reset(handle);
        return result == SQLITE_DONE ? SQLITE_OK : result;
    }
    void bind(int place, std::uint64_t value) { sqlite3_bind_int64(handle, place, std::int64_t(value)); }
    void bind(int place, QByteArray const &text)  // UTF-8, standing until the statement has run
    {
        sqlite3_bind_text(handle, place, text.constData(), text.size(), SQLITE_STATIC);
    }
    void bind_blob(int place, std::string const &bytes)
    {
        sqlite3_bind_blob64(handle, place, bytes.data(), bytes.size(), SQLITE_STATIC);
    }
    std::uint64_t number(int column) { return std::uint64_t(sqlite3_column_int64(handle, column)); }
    QString text(int column)
    {
        auto const bytes = reinterpret_cast<char const *>(sqlite3_column_text(handle, column));
        return QString::fromUtf8(bytes, sqlite3_column_bytes(handle, column));
    }
    sqlite3_stmt *handle = nullptr;
};

template <class ITEM>
void append(std::string &bytes, std::span<ITEM const> items)
{
    bytes.append(reinterpret_cast<char const *>(items.data()), items.size_bytes());
}

std::string row_bytes(RECORD_ROW const &row)
{
    std::uint64_t const head[head_words] = {
        0, row.signature, row.account, row.flags, row.files.size(), row.readings.size(), row.targets.size()};
    std::string bytes(reinterpret_cast<char const *>(head), sizeof head);
    append(bytes, row.files);
    append(bytes, row.readings);
    append(bytes, row.targets);
    std::uint64_t const checksum = XXH3_64bits(bytes.data() + 8, bytes.size() - 8);
    std::memcpy(bytes.data(), &checksum, 8);
    return bytes;
}

}  // namespace

std::uint64_t text_id(QString const &text)
{
    return XXH3_64bits(text.constData(), std::size_t(text.size()) * sizeof(QChar));
}

BUILD_RECORD::~BUILD_RECORD() { close(); }

void BUILD_RECORD::close()
{
    sqlite3_close(database);
    database = nullptr;
    memory.clear();
    keys.clear();
    rows.clear();
    slots_of_keys.clear();
    outside.clear();
    asked.clear();
}

bool BUILD_RECORD::execute(char const *statement, QString &fault)
{
    if (sqlite3_exec(database, statement, nullptr, nullptr, nullptr) == SQLITE_OK)
        return true;
    fault = QString::fromUtf8(sqlite3_errmsg(database));
    return false;
}

bool BUILD_RECORD::open(QString const &file, QString &note)
{
    QString fault;
    OPENED opened = open_file(file, fault);
    if (opened == OPENED::DAMAGED) {
        close();
        for (char const *part : {"", "-wal", "-shm", "-journal"})
            QFile::remove(file + QLatin1String(part));
        note = QStringLiteral("%1: the build record is damaged (%2); it is begun anew and everything is built again")
                   .arg(file, fault);
        opened = open_file(file, fault);
    }
    if (opened != OPENED::GOOD) {
        close();
        note = QStringLiteral("%1: the build record cannot be opened (%2); is the folder writable?").arg(file, fault);
        return false;
    }
    if (note.isEmpty())
        note = fault;
    return true;
}

BUILD_RECORD::OPENED BUILD_RECORD::open_file(QString const &file, QString &fault)
{
    fault.clear();
    int result =
        sqlite3_open_v2(file.toUtf8().constData(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (result != SQLITE_OK) {
        fault = QString::fromUtf8(sqlite3_errmsg(database));
        return OPENED::REFUSED;
    }
    // One process at a time uses the record (the build lock), so there is no need for files shared with others.
    sqlite3_exec(database, "PRAGMA locking_mode = EXCLUSIVE; PRAGMA synchronous = NORMAL; PRAGMA cache_size = -65536",
                 nullptr, nullptr, nullptr);

    int mark = 0, version = 0, tables = 0;
    {
        STATEMENT head(database, "SELECT (SELECT application_id FROM pragma_application_id),"
                                 " (SELECT user_version FROM pragma_user_version), count(*) FROM sqlite_schema");
        result = head.step();
        if (result == SQLITE_ROW) {
            mark = int(head.number(0));
            version = int(head.number(1));
            tables = int(head.number(2));
        }
    }
    if (result != SQLITE_ROW) {
        fault = QString::fromUtf8(sqlite3_errmsg(database));
        result = sqlite3_errcode(database);
        return result == SQLITE_CORRUPT || result == SQLITE_NOTADB ? OPENED::DAMAGED : OPENED::REFUSED;
    }
    if (tables == 0)
        return execute(schema, fault) ? OPENED::GOOD : OPENED::REFUSED;
    if (mark != application_mark || version != format_version) {
        fault = QStringLiteral("it is of another kind or version");
        return OPENED::DAMAGED;
    }
    return read_rows(fault);
}

BUILD_RECORD::OPENED BUILD_RECORD::read_rows(QString &fault)
{
    struct PLACE {
        std::size_t first_word;
        std::size_t files, readings, targets;
    };
    std::vector<PLACE> places;
    std::size_t damaged = 0;
    STATEMENT all(database, "SELECT key, state FROM action");
    int result;
    while ((result = all.step()) == SQLITE_ROW) {
        auto const bytes = static_cast<unsigned char const *>(sqlite3_column_blob(all.handle, 1));
        std::size_t const size = std::size_t(sqlite3_column_bytes(all.handle, 1));
        std::uint64_t head[head_words] = {};
        bool good = size >= sizeof head && size % 8 == 0;
        if (good) {
            std::memcpy(head, bytes, sizeof head);
            good = head[0] == XXH3_64bits(bytes + 8, size - 8);
        }
        std::uint64_t const words = size / 8 - (good ? head_words : 0);
        good = good && head[4] <= words && head[5] <= words && head[6] <= words &&
               4 * head[4] + 2 * head[5] + 2 * head[6] == words;
        if (!good) {
            ++damaged;
            continue;
        }
        places.push_back({memory.size(), head[4], head[5], head[6]});
        keys.push_back(all.number(0));
        rows.push_back({std::uint32_t(head[3]), head[1], head[2], {}, {}, {}});
        memory.resize(memory.size() + words);
        std::memcpy(memory.data() + places.back().first_word, bytes + sizeof head, words * 8);
    }
    if (result != SQLITE_DONE) {
        fault = QString::fromUtf8(sqlite3_errmsg(database));
        return OPENED::DAMAGED;
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::uint64_t const *word = memory.data() + places[i].first_word;
        rows[i].files = {reinterpret_cast<RECORDED_FILE const *>(word), places[i].files};
        word += 4 * places[i].files;
        rows[i].readings = {reinterpret_cast<RECORDED_READING const *>(word), places[i].readings};
        word += 2 * places[i].readings;
        rows[i].targets = {reinterpret_cast<RECORDED_TARGET const *>(word), places[i].targets};
    }
    slots_of_keys.assign(std::bit_ceil(2 * rows.size() + 1), 0);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        std::size_t slot = keys[i] & (slots_of_keys.size() - 1);
        while (slots_of_keys[slot] != 0)
            slot = (slot + 1) & (slots_of_keys.size() - 1);
        slots_of_keys[slot] = std::uint32_t(i + 1);
    }
    STATEMENT others(database, "SELECT id, text, kind FROM text WHERE kind >= 2");
    while ((result = others.step()) == SQLITE_ROW)
        (TEXT_KIND(others.number(2)) == TEXT_KIND::OUTSIDE_PATH ? outside : asked)
            .emplace(others.number(0), others.text(1));
    if (result != SQLITE_DONE) {
        fault = QString::fromUtf8(sqlite3_errmsg(database));
        return OPENED::DAMAGED;
    }
    if (damaged != 0)
        fault = QStringLiteral("build record: %1 of %2 rows are damaged; their actions run again")
                    .arg(damaged)
                    .arg(damaged + rows.size());
    return OPENED::GOOD;
}

RECORD_ROW const *BUILD_RECORD::find(std::uint64_t key) const
{
    if (rows.empty())
        return nullptr;
    std::size_t const mask = slots_of_keys.size() - 1;
    for (std::size_t slot = key & mask; slots_of_keys[slot] != 0; slot = (slot + 1) & mask)
        if (keys[slots_of_keys[slot] - 1] == key)
            return &rows[slots_of_keys[slot] - 1];
    return nullptr;
}

void BUILD_RECORD::put(std::uint64_t key, RECORD_ROW const &row, RECORD_TEXTS const &texts)
{
    QUEUED_ROW queued{key, row_bytes(row), texts, true};
    std::lock_guard const guard(queue_lock);
    queued_rows.push_back(std::move(queued));
}

void BUILD_RECORD::put_state(std::uint64_t key, RECORD_ROW const &row)
{
    QUEUED_ROW queued{key, row_bytes(row), {}, false};
    std::lock_guard const guard(queue_lock);
    queued_rows.push_back(std::move(queued));
}

void BUILD_RECORD::put_text(std::uint64_t id, QString const &text, TEXT_KIND kind)
{
    std::lock_guard const guard(queue_lock);
    if (texts_put.insert(id).second)
        queued_texts.push_back({id, text, kind});
}

void BUILD_RECORD::remove(std::uint64_t key)
{
    std::lock_guard const guard(queue_lock);
    queued_rows.push_back({key, {}, {}, true});
}

void BUILD_RECORD::keep(KEPT_FILE file)
{
    std::lock_guard const guard(queue_lock);
    queued_files.push_back(std::move(file));
}

std::vector<KEPT_FILE> BUILD_RECORD::kept_files() const
{
    std::lock_guard const guard(file_lock);
    std::vector<KEPT_FILE> files;
    STATEMENT all(database, "SELECT name, size, time, made FROM kept");
    while (all.step() == SQLITE_ROW) {
        auto const bytes = static_cast<char const *>(sqlite3_column_blob(all.handle, 3));
        files.push_back({all.text(0), std::int64_t(all.number(1)), std::int64_t(all.number(2)),
                         QByteArray(bytes, sqlite3_column_bytes(all.handle, 3))});
    }
    return files;
}

bool BUILD_RECORD::flush(QString &fault)
{
    std::lock_guard const file_guard(file_lock);
    std::vector<QUEUED_ROW> new_rows;
    std::vector<QUEUED_TEXT> new_texts;
    std::vector<KEPT_FILE> new_files;
    {
        std::lock_guard const guard(queue_lock);
        new_rows.swap(queued_rows);
        new_texts.swap(queued_texts);
        new_files.swap(queued_files);
    }
    if (new_rows.empty() && new_texts.empty() && new_files.empty())
        return true;
    if (database == nullptr || !execute("BEGIN IMMEDIATE", fault))
        return false;

    int result = SQLITE_OK;
    {
        STATEMENT put_row(database, "REPLACE INTO action VALUES(?, ?)");
        STATEMENT put_told(database, "REPLACE INTO told VALUES(?, ?, ?, ?, ?)");
        STATEMENT remove_row(database, "DELETE FROM action WHERE key = ?");
        STATEMENT remove_told(database, "DELETE FROM told WHERE key = ?");
        STATEMENT put_id(database, "INSERT OR IGNORE INTO text VALUES(?, ?, ?)");
        STATEMENT keep_file(database, "REPLACE INTO kept VALUES(?, ?, ?, ?)");
        STATEMENT forget_file(database, "DELETE FROM kept WHERE name = ?");
        for (QUEUED_ROW const &row : new_rows) {
            STATEMENT &first = row.bytes.empty() ? remove_row : put_row;
            STATEMENT &second = row.bytes.empty() ? remove_told : put_told;
            first.bind(1, row.key);
            second.bind(1, row.key);
            QByteArray const texts[] = {row.texts.action_class.toUtf8(), row.texts.source.toUtf8(),
                                        row.texts.target.toUtf8(), row.texts.output.toUtf8()};
            if (!row.bytes.empty()) {
                first.bind_blob(2, row.bytes);
                for (int i = 0; i < 4; ++i)
                    second.bind(2 + i, texts[i]);
            }
            result = result != SQLITE_OK ? result : first.run();
            if (row.has_texts)
                result = result != SQLITE_OK ? result : second.run();
        }
        for (QUEUED_TEXT const &queued : new_texts) {
            QByteArray const bytes = queued.text.toUtf8();
            put_id.bind(1, queued.id);
            put_id.bind(2, bytes);
            put_id.bind(3, std::uint64_t(queued.kind));
            result = result != SQLITE_OK ? result : put_id.run();
        }
        for (KEPT_FILE const &file : new_files) {
            STATEMENT &change = file.made.isEmpty() ? forget_file : keep_file;
            QByteArray const name = file.name.toUtf8();
            change.bind(1, name);
            if (!file.made.isEmpty()) {
                change.bind(2, std::uint64_t(file.size));
                change.bind(3, std::uint64_t(file.time));
                sqlite3_bind_blob64(change.handle, 4, file.made.constData(), sqlite3_uint64(file.made.size()),
                                    SQLITE_STATIC);
            }
            result = result != SQLITE_OK ? result : change.run();
        }
    }
    if (result == SQLITE_OK && execute("COMMIT", fault))
        return true;
    fault = QStringLiteral("the build record cannot be written (%1); is the disk full?")
                .arg(QString::fromUtf8(sqlite3_errmsg(database)));
    sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    return false;
}

QString BUILD_RECORD::text(std::uint64_t id) const
{
    STATEMENT ask(database, "SELECT text FROM text WHERE id = ?");
    ask.bind(1, id);
    return ask.step() == SQLITE_ROW ? ask.text(0) : QString();
}

RECORD_TEXTS BUILD_RECORD::texts(std::uint64_t key) const
{
    STATEMENT ask(database, "SELECT class, source, target, output FROM told WHERE key = ?");
    ask.bind(1, key);
    if (ask.step() != SQLITE_ROW)
        return {};
    return {ask.text(0), ask.text(1), ask.text(2), ask.text(3)};
}
