#ifndef NOTING_WALKER_H
#define NOTING_WALKER_H

#include "registry.h"
#include "walked_hive.h"

#include <QStringList>

namespace test_support {

/// The walkers' base with a hook that notes each value and fills the generic record: the value
/// names "name", "value" and "data" stand for the record's fields.
class noting_walker : public registry
{
public:
    void find_node_value_length(hive_h *hive, unsigned long value, QString value_name) override
    {
        values.append(current_key_name + QLatin1Char(':') + value_name);
        texts.append(convert_data(hive, value));
        times.append(current_key_timestamp);
        if (current_data == nullptr)
            return;
        if (value_name == QLatin1String("name"))
            current_data->name = convert_data(hive, value);
        else if (value_name == QLatin1String("value"))
            current_data->value = convert_data(hive, value);
        else if (value_name == QLatin1String("data"))
            current_data->data = value_bytes(hive, value);
    }

    /// The generic records as "name|value|data".
    QStringList records() const
    {
        QStringList texts_of_records;
        for (const struct_data &record : data_records)
            texts_of_records.append(record.name + QLatin1Char('|') + record.value +
                                    QLatin1Char('|') + QString::fromLatin1(record.data));
        return texts_of_records;
    }

    QStringList values; ///< as "key:value"
    QStringList texts;  ///< the data of each value as text
    QStringList times;  ///< current_key_timestamp at each value
};

using noted_hive = walked_hive<noting_walker>;

} // namespace test_support

#endif
