#ifndef PARSE_HIDDEN_DESKTOP_ICONS_H
#define PARSE_HIDDEN_DESKTOP_ICONS_H

#include "registry.h"

#include <QHash>
#include <QLatin1StringView>
#include <QList>
#include <QString>

#include <functional>

/// Walker of the desktop icons that a user hive hides. The key path of the walk decides what
/// becomes a record:
/// - exactly the HideDesktopIcons key: each value of each direct subkey, as name (a class id) and
///   raw data, in data_records;
/// - a path that contains the desktop NameSpace key and a backslash: each value of that one key, as
///   text, in hidden_icons_records.
/// Both tests are case-sensitive.
class parse_hidden_desktop_icons : public registry
{
public:
    /// Key path of the walk over the icons' settings.
    static constexpr QLatin1StringView hidden_icons_key{
        "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\HideDesktopIcons"};
    /// Start of the key path of the walks that name an icon; a class id follows.
    static constexpr QLatin1StringView name_space_key{
        "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Desktop\\NameSpace\\"};

    parse_hidden_desktop_icons();
    ~parse_hidden_desktop_icons() override;

    /// As in registry; sets parsed_key_path even when the hive cannot be opened. When the key's own
    /// values are read, each value gives one record instead of the whole key.
    int start_registry_parse(QString hive_path, QString key_path, bool read_key_values) override;

    /// Looks up the names of icons, one class id after the other, in one opening of the hive at
    /// `hive_path`. For each it empties hidden_icons_records and fills it with what
    /// start_registry_parse() finds at name_space_key and the class id. It then calls `visit` with
    /// the class id's position in `class_ids` and the key that was found, 0 for none; false ends
    /// the lookup. A key that several class ids lead to is read once and its names are kept.
    /// Returns 0, or -1 without a visit when the path is empty or the hive cannot be opened.
    int look_up_icon_names(const QString &hive_path, const QList<struct_data> &class_ids,
                           const std::function<bool(qsizetype, unsigned long)> &visit);

    /// Reads the values of each direct subkey of `node`; the subkey's name is not recorded.
    void run_only_multiple_paths(hive_h *hive, unsigned long node) override;

    /// Returns the data as text, as registry describes it.
    QString convert_data(hive_h *hive, unsigned long value) override;

    /// Makes a record of a value, or a part of one, as the class description says.
    void find_node_value_length(hive_h *hive, unsigned long value, QString value_name) override;

    /// Returns the raw data, empty when it cannot be read.
    QByteArray convert_data(hive_h *hive, unsigned long value, int unused) override;

    /// Returns the registry type code (REG_SZ 1, REG_BINARY 3, ...), 0 when it cannot be read.
    int convert_data(hive_h *hive, unsigned long value, QString unused) override;

private:
    using names_by_key = QHash<unsigned long, QList<struct_hidden_icons>>;

    void read_names_once(hive_h *hive, unsigned long key, names_by_key &known);
};

#endif
