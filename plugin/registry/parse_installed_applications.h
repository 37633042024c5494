#ifndef PARSE_INSTALLED_APPLICATIONS_H
#define PARSE_INSTALLED_APPLICATIONS_H

#include "registry.h"

#include <QLatin1StringView>

/// Walker of the keys that list installed applications. When the subkeys of a key are walked, each
/// becomes a record in installed_apps_records, with its name and last-write time. The key path of
/// the walk decides, by case-sensitive substrings and in this order, which values are read:
/// - an Uninstall key: those of each subkey, into its record;
/// - "\RegisteredApplications": each value, as name and text, a record in data_records;
/// - the Compatibility Assistant's Store: each value, as name and raw data, a record in
/// data_records;
/// - any other key: none.
class parse_installed_applications : public registry
{
public:
    /// Key path of the walk over the Compatibility Assistant's Store.
    static constexpr QLatin1StringView compatibility_store_key{
        "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\AppCompatFlags\\Compatibility "
        "Assistant\\Store"};

    parse_installed_applications();
    ~parse_installed_applications() override;

    /// As in registry; sets parsed_key_path even when the hive cannot be opened. When the key's own
    /// values are read, each value gives one record instead of the whole key.
    int start_registry_parse(QString hive_path, QString key_path, bool read_key_values) override;

    /// Appends one record for each direct subkey of `node`, one without values included.
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
    enum class key_kind
    {
        other,
        uninstall,
        registered_applications,
        compatibility_store
    };

    /// Decides once for a walk what find_node_value_length() is to do with each value.
    static key_kind kind_of(const QString &key_path);
    void read_application_value(hive_h *hive, unsigned long value, const QString &value_name);

    key_kind m_kind = key_kind::other;
};

#endif
