#ifndef PARSE_USER_ASSIST_H
#define PARSE_USER_ASSIST_H

#include "registry.h"

/// Walker of a user's UserAssist key: every value below a class id's subkeys, at any depth, becomes
/// one record in user_assist_records. Names stay letter-rotated and data stays raw.
///
/// Records are ordered by class id, then by the class id's subkey (in practice only "Count"), then
/// in hive order, values of deeper keys last. Values directly on a class id are not recorded. The
/// caller clears the list between hives.
class parse_user_assist : public registry
{
public:
    parse_user_assist();
    ~parse_user_assist() override;

    /// Walks the subkeys of one class id; returns whether it has any.
    bool run_only_multiple(hive_h *hive, int node) override;

    /// Walks the class ids below the UserAssist key `node`.
    void run_only_multiple_paths(hive_h *hive, unsigned long node) override;

    /// Returns the data as text, as registry describes it.
    QString convert_data(hive_h *hive, unsigned long value) override;

    /// Makes a record of a value, or a part of one, as the class description says.
    void find_node_value_length(hive_h *hive, unsigned long value, QString value_name) override;

    /// Returns the raw data, empty when it cannot be read.
    QByteArray convert_data(hive_h *hive, unsigned long value, int unused) override;

    /// Returns the registry type code (REG_SZ 1, REG_BINARY 3, ...), 0 when it cannot be read.
    int convert_data(hive_h *hive, unsigned long value, QString unused) override;

    QString current_class_id; ///< name of the class id whose values are read
};

#endif
