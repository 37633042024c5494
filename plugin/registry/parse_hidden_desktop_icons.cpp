#include "parse_hidden_desktop_icons.h"

parse_hidden_desktop_icons::parse_hidden_desktop_icons() = default;

parse_hidden_desktop_icons::~parse_hidden_desktop_icons() = default;

int parse_hidden_desktop_icons::start_registry_parse(QString hive_path, QString key_path,
                                                     bool read_key_values)
{
    return walk_hive_by_key_path(hive_path, key_path, read_key_values,
                                 &registry::current_hidden_icon);
}

void parse_hidden_desktop_icons::run_only_multiple_paths(hive_h *hive, unsigned long node)
{
    const QMap<QString, int> children = prepare_the_node_key_child(hive, node, false);
    for (const int child : children)
        read_record(hive, handle(child), &registry::current_data);
}

void parse_hidden_desktop_icons::find_node_value_length(hive_h *hive, unsigned long value,
                                                        QString value_name)
{
    if (current_data != nullptr && parsed_key_path == hidden_icons_key) {
        current_data->name = value_name;
        current_data->data = convert_data(hive, value, 1);
        data_records.append(*current_data);
    } else if (current_hidden_icon != nullptr && parsed_key_path.contains(name_space_key)) {
        current_hidden_icon->value = convert_data(hive, value);
        hidden_icons_records.append(*current_hidden_icon);
    }
}

QString parse_hidden_desktop_icons::convert_data(hive_h *hive, unsigned long value)
{
    return value_text(hive, value);
}

QByteArray parse_hidden_desktop_icons::convert_data(hive_h *hive, unsigned long value,
                                                    int /*unused*/)
{
    return value_bytes(hive, value);
}

int parse_hidden_desktop_icons::convert_data(hive_h *hive, unsigned long value, QString /*unused*/)
{
    return value_type(hive, value);
}
