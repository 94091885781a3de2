// The asset database: the rows that models keep in the tables which the game reads. A SQLite file of the tree by
// default, a PostgreSQL server where mox.toml names one; both through Qt Sql, on one thread of their own, to which the
// callers hand their work and wait. It opens with the first call that needs it.
//
// A table is made when its first row comes, with a column for each of the row's, by the type of its value, and with a
// generated integer `key` if no column is marked as the key. Later rows may name its columns only. Names of tables and
// columns are small letters, digits and underscores; values are bound, never part of a statement.
#pragma once

#include "platform/build_host/asset_rows.h"
#include "platform/build_host/asset_store.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

// How mox.toml describes the database.
struct DATABASE_SETTINGS {
    QString driver = QStringLiteral("sqlite");  // sqlite or postgresql
    QString name;                               // sqlite: the file, physical; postgresql: the database
    QString host;                               // postgresql only, as the next three; empty: the driver's defaults
    int port = 0;
    QString user;
    QString password_variable;  // name of the environment variable that holds it
    QString export_folder;      // physical: where the tables are written as text
};

// Calls from any thread; each takes effect as a whole, or leaves the database as it was and gives a line.
class BUILD_HOST_API ASSET_DATABASE : public ASSET_STORE {
public:
    // `state_folder` keeps, as a list of tables, what has changed and is not exported yet.
    ASSET_DATABASE(DATABASE_SETTINGS settings, QString state_folder);
    ~ASSET_DATABASE() override;
    ASSET_DATABASE(ASSET_DATABASE const &) = delete;
    ASSET_DATABASE &operator=(ASSET_DATABASE const &) = delete;

    static bool check(DATABASE_SETTINGS const &settings, QString &fault);

    // Another server, or a file that was deleted and made anew, has another identity. A missing file is made first if
    // that is allowed, as it is for a build: what is to hold its rows has to have an identity from the start.
    QString identity() override;
    QString file() const override { return settings.driver == QLatin1String("sqlite") ? settings.name : QString(); }
    void allow_making() { may_make = true; }
    // Sets generated keys aside, until the run ends, for the rows of `table`: the next free numbers in the order of the
    // calls, so that the order in which the rows come later does not matter. Rows that were not announced get the
    // numbers behind.
    void announce(UPDATE_DB_TABLE const &table);
    // A row is known by its key column, one with a generated key by its `filename`.
    bool apply(UPDATE_DB_TABLE const &table, QString const &key, bool patch, QString &fault) override;
    bool remove(QString const &key, QString const &table, QString const &column, QString const &value, bool folded,
                bool dry_run, bool &found, QString &fault) override;
    void want_export(QString const &table, bool book) override;

    // The end of a run: drops staged removals that no row followed and reserved keys, writes the wanted tables.
    // `booked` gets the files to book, physical.
    bool finish(QStringList &booked, QString &fault);

    // For people: all tables, and the lines of one as they are exported.
    bool tables(QStringList &names, QString &fault);
    bool table_text(QString const &table, QString &text, QString &fault);

private:
    struct REMOVAL {
        QString key, table, column, value;
        bool folded;
    };

    using WORK = std::function<bool(QSqlDatabase &, QString &)>;

    bool on_thread(WORK const &work, QString &fault);
    void serve();
    bool open(QSqlDatabase &database, QString &fault) const;
    bool mark_changed(QString const &table, QString &fault);
    QString changed_list() const { return state_folder + QStringLiteral("/changed_tables"); }

    DATABASE_SETTINGS settings;
    QString state_folder;
    bool may_make = false;

    // The database's thread and the one piece of work that it has to do.
    std::mutex callers;  // one at a time
    std::mutex lock;
    std::condition_variable changed;
    WORK const *waiting_work = nullptr;
    QString work_fault;
    bool work_result = false;
    bool is_ending = false;
    std::map<QString, RESERVED_KEYS> reserved;  // by table; under `lock`, as all work on the thread is
    std::thread thread;

    std::mutex lists;
    QVector<REMOVAL> staged;
    QMap<QString, bool> wanted_exports;  // by table: to be booked
    QStringList marked;                  // lines "TABLE BOOK" of the list of what has changed
};
