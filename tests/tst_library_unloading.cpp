#include "artifact_plugin_interface.h"
#include "files.h"
#include "sample_rows.h"
#include "test_main.h"

#include <QLabel>
#include <QMetaType>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>

#include <dlfcn.h>
#include <memory>

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

const QByteArray library_path = PLUGIN_LIBRARY;

bool is_loaded()
{
    void *library = dlopen(library_path.constData(), RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr)
        dlclose(library);
    return library != nullptr;
}

/// The library for as long as it lives, loaded as a host does that links nothing of it.
class loaded_library
{
public:
    loaded_library() : m_library(dlopen(library_path.constData(), RTLD_NOW | RTLD_LOCAL)) {}
    ~loaded_library() { dlclose(m_library); }
    Q_DISABLE_COPY_MOVE(loaded_library)

    std::unique_ptr<artifact_plugin> create_object() const
    {
        const auto create = reinterpret_cast<void *(*)()>(dlsym(m_library, "create_object"));
        return std::unique_ptr<artifact_plugin>(static_cast<artifact_plugin *>(create()));
    }

private:
    void *m_library;
};

/// What the plug-in says of its artefacts, and a copy as a host keeps it.
QVariantList told_artifacts()
{
    return loaded_library().create_object()->property("artifacts").toList();
}

/// Evidence for every table, and where the results go.
struct case_folder
{
    const QVariantList artifacts = told_artifacts();
    evidence_volume volume;
    QTemporaryDir results;
    const QString log = results.filePath(u"debug.log"_s);

    case_folder()
    {
        add_sample_rows(volume, artifacts);
        volume.write();
        write_file(log, {});
    }

    QString database() const
    {
        return results.path() +
               u"/Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite"_s;
    }

    QStringList tabs() const
    {
        QStringList names;
        for (const QVariant &artifact : artifacts)
            names.append(artifact.toMap().value(u"name"_s).toString());
        return names;
    }
};

struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source_of(const case_folder &folder,
                                                              const QString &scheme)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    source.source_root_path = folder.volume.root();
    source.os_scheme_display = u"Windows"_s;
    source.os_scheme_internal = scheme;
    for (const QString &account : folder.volume.accounts())
        source.system_account_list.append({account, {}});
    return source;
}

void set_up(artifact_plugin &plugin, const case_folder &folder, const QString &scheme)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info general;
    general.debug_mode_status = true;
    general.debug_print_in_file = true;
    general.debug_print_on_terminal = true;
    general.debug_file_path = folder.log;
    plugin.pub_set_essentials();
    plugin.pub_set_engine_type(0);
    plugin.pub_set_general_info(general);
    plugin.pub_set_examiner_machine_info({});
    plugin.pub_set_source_info(source_of(folder, scheme));
    plugin.pub_set_source_count(1);
    plugin.pub_set_ios_uid_backup_pointer(nullptr);
    plugin.pub_set_extended_attributes_list({u"attribute"_s});
    plugin.pub_set_essential_for_arken_desk_extraction(folder.tabs() + QStringList{u"no table"_s},
                                                       {});
    plugin.pub_set_result_directory(folder.results.path());
}

/// Every operation of the plug-in, for every scheme, with failures too; returns the artefact's name
/// as a host keeps it.
QString drive(artifact_plugin &plugin, const case_folder &folder)
{
    for (const QString &scheme : {u"winOS"_s, u"macOS"_s, u"iOS_UID"_s, u"none"_s}) {
        set_up(plugin, folder, scheme);
        plugin.pub_create_db_tables();
        plugin.pub_set_clear_db(scheme == "winOS"_L1);
        plugin.pub_find_source_file();
        plugin.pub_extract_artifacts();
        plugin.pub_generate_chat_html_pages();
        plugin.pub_remove_temporary_asthetics();
    }
    plugin.pub_cancel_extraction();
    return plugin.pub_get_artifact_name();
}

void swallow(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString & /*text*/)
{
}

/// Swallows the log's lines meanwhile.
class quiet_terminal
{
public:
    quiet_terminal() : m_earlier(qInstallMessageHandler(swallow)) {}
    ~quiet_terminal() { qInstallMessageHandler(m_earlier); }
    Q_DISABLE_COPY_MOVE(quiet_terminal)

private:
    QtMessageHandler m_earlier;
};

/// One life of the library in the process: loaded, driven and unloaded again.
QString live_once(const case_folder &folder)
{
    const quiet_terminal quiet;
    const loaded_library library;
    const std::unique_ptr<artifact_plugin> plugin = library.create_object();
    return drive(*plugin, folder);
}

/// Uses a connection of our own, as a host goes on doing.
int count_rows(const QString &database, const QString &table)
{
    int rows = -1;
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"of the host"_s);
        connection.setDatabaseName(database);
        connection.open();
        QSqlQuery query(u"select count(*) from "_s + table, connection);
        rows = query.next() ? query.value(0).toInt() : -1;
    }
    QSqlDatabase::removeDatabase(u"of the host"_s);
    return rows;
}

} // namespace

// A host unloads the plug-in and lives on: nothing of the library may stay in Qt.
class tst_library_unloading : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void connections_can_be_listed_and_removed();
    void connections_can_be_added_beside_those_left_behind();
    void types_can_be_looked_up();
    void name_of_the_artefact_lives_on();
    void description_of_the_artefacts_lives_on();
    void library_can_be_loaded_again();
    void widgets_can_be_made();
};

void tst_library_unloading::initTestCase()
{
    QVERIFY(!is_loaded());
    const case_folder folder;
    live_once(folder);
#ifdef Q_OS_DARWIN
    if (is_loaded())
        QSKIP("the system keeps libraries that hold Objective-C");
#endif
    QVERIFY2(!is_loaded(), "something keeps the library in the process");
    QCOMPARE(count_rows(folder.database(), u"install_apps_64"_s), int(sample_row_count));
}

void tst_library_unloading::cleanup()
{
    for (const QString &name : QSqlDatabase::connectionNames())
        QSqlDatabase::removeDatabase(name);
}

void tst_library_unloading::connections_can_be_listed_and_removed()
{
    const case_folder folder;
    live_once(folder);
    QVERIFY(!is_loaded());
    const QStringList names = QSqlDatabase::connectionNames();
    QCOMPARE(names.size(), folder.tabs().size() + 2); // and those for creating and clearing
    for (const QString &name : names) {
        QVERIFY(QSqlDatabase::contains(name));
        const QSqlDatabase database = QSqlDatabase::database(name, false);
        QCOMPARE(database.connectionName(), name);
        QCOMPARE(database.driverName(), u"QSQLITE"_s);
        QVERIFY(database.databaseName().endsWith(u".sqlite"_s));
        QVERIFY(!database.isOpen());
    }
    for (const QString &name : names)
        QSqlDatabase::removeDatabase(name);
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList());
}

void tst_library_unloading::connections_can_be_added_beside_those_left_behind()
{
    const case_folder folder;
    live_once(folder);
    const QStringList before = QSqlDatabase::connectionNames();
    // So many that the list is searched and grown.
    for (int number = 0; number < 200; ++number)
        QSqlDatabase::addDatabase(u"QSQLITE"_s, u"host "_s + QString::number(number));
    for (const QString &table : folder.tabs())
        QCOMPARE(count_rows(folder.database(), table), int(sample_row_count));
    for (int number = 0; number < 200; ++number)
        QSqlDatabase::removeDatabase(u"host "_s + QString::number(number));
    QStringList after = QSqlDatabase::connectionNames();
    QCOMPARE(QSet<QString>(after.cbegin(), after.cend()),
             QSet<QString>(before.cbegin(), before.cend()));
    for (const QString &name : before) {
        QSqlDatabase again = QSqlDatabase::cloneDatabase(name, u"clone"_s);
        QVERIFY(again.open());
        again = {};
        QSqlDatabase::removeDatabase(u"clone"_s);
    }
    QVERIFY(QSqlDatabase::drivers().contains(u"QSQLITE"_s));
    QVERIFY(QSqlDatabase::isDriverAvailable(u"QSQLITE"_s));
}

void tst_library_unloading::types_can_be_looked_up()
{
    live_once(case_folder());
    QCOMPARE(QMetaType::fromName("windows_installed_applications*"), QMetaType());
    for (int id = QMetaType::User; id < QMetaType::User + 1000; ++id) {
        const QMetaType type(id);
        if (type.isValid())
            QVERIFY(!QByteArray(type.name()).contains("windows_installed_applications"));
    }
}

void tst_library_unloading::name_of_the_artefact_lives_on()
{
    const QString name = live_once(case_folder());
    QVERIFY(!is_loaded());
    QCOMPARE(name, u"Windows Installed Applications"_s);
}

void tst_library_unloading::description_of_the_artefacts_lives_on()
{
    const QVariantList artifacts = told_artifacts();
    QVERIFY(!is_loaded());
    const QVariantMap first = artifacts.value(0).toMap();
    QCOMPARE(first.keys(), (QStringList{u"input"_s, u"keys"_s, u"keys_of_users"_s, u"name"_s}));
    QCOMPARE(first.value(u"name"_s).toString(), u"install_apps_64"_s);
    QCOMPARE(first.value(u"input"_s).toString(), u"software_hive"_s);
    const QVariantMap key = first.value(u"keys"_s).toList().value(0).toMap();
    QCOMPARE(key.keys(), (QStringList{u"first_value_level"_s, u"last_level"_s, u"path"_s}));
    QCOMPARE(key.value(u"path"_s).toString(), u"Microsoft\\Windows\\CurrentVersion\\Uninstall"_s);
}

void tst_library_unloading::library_can_be_loaded_again()
{
    for (int life = 0; life < 3; ++life) {
        const case_folder folder;
        live_once(folder);
        QVERIFY(!is_loaded());
        for (const QString &table : folder.tabs())
            QCOMPARE(count_rows(folder.database(), table), int(sample_row_count));
        QCOMPARE(QSqlDatabase::connectionNames().size(), folder.tabs().size() + 2);
    }
}

// The style and the translations have seen the plug-in's widgets.
void tst_library_unloading::widgets_can_be_made()
{
    live_once(case_folder());
    QLabel label(tr("Windows Installed Applications"));
    label.setObjectName(u"windows_installed_applications"_s);
    label.setStyleSheet(u"QFrame { color: red }"_s);
    label.show();
    QCoreApplication::processEvents();
    QVERIFY(label.isVisible());
}

TEST_MAIN(tst_library_unloading)
#include "tst_library_unloading.moc"
