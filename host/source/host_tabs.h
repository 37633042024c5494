#ifndef HOST_TABS_H
#define HOST_TABS_H

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>

class QObject;

/// What a tab is filled from.
enum class tab_input
{
    software_hive,
    user_hive,
    package_folder
};

/// One result tab, which is also a table of the result database.
struct host_tab
{
    QString name;
    tab_input input;
    bool may_read_user_hives; ///< besides its input, if the plug-in is asked to
};

/// The tabs that the plug-in object tells of in its property "artifacts", in the order in which it
/// fills them. Empty when it tells of none, or of one that this program does not understand.
QList<host_tab> tabs_of(const QObject &plugin);

/// The tabs that such a property describes.
QList<host_tab> described_tabs(const QVariantList &descriptions);

/// The names of the tabs.
QStringList names_of(const QList<host_tab> &tabs);

/// The tabs among those of the plug-in that `names` has, each once and in the plug-in's order.
QList<host_tab> tabs_named(const QList<host_tab> &tabs, const QStringList &names);

/// The tabs of a run that reads no installations of users.
QList<host_tab> without_installations_of_users(QList<host_tab> tabs);

/// Whether one of `tabs` is filled from the users' hives.
bool reads_user_hives(const QList<host_tab> &tabs);

/// Whether one of `tabs` is filled from `input`.
bool any_reads(const QList<host_tab> &tabs, tab_input input);

#endif
