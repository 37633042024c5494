#include "parse_hidden_desktop_icons.h"

parse_hidden_desktop_icons::parse_hidden_desktop_icons() = default;

parse_hidden_desktop_icons::~parse_hidden_desktop_icons() = default;

int parse_hidden_desktop_icons::start_registry_parse(QString hive_path, QString key_path,
                                                     bool read_key_values)
{
    return walk_hive_by_key_path(hive_path, key_path, read_key_values,
                                 &registry::current_hidden_icon);
}

int parse_hidden_desktop_icons::look_up_icon_names(
    const QString &hive_path, const QList<struct_data> &class_ids,
    const std::function<bool(qsizetype, unsigned long)> &visit)
{
    if (hive_path.isEmpty())
        return -1;
    return walk_opened_hive(hive_path, [&](hive_h *hive, unsigned long root) {
        keep_subkey_names();
        names_by_key known;
        QHash<QString, unsigned long> keys; ///< by class id: of a forged one the way may be long
        bool goes_on = true;
        for (qsizetype position = 0; goes_on && position < class_ids.size(); ++position) {
            const QString &class_id = class_ids.at(position).name;
            parsed_key_path = name_space_key + class_id;
            if (!keys.contains(class_id))
                keys.insert(class_id, get_user_node_handle(hive, parsed_key_path, root));
            const unsigned long key = keys.value(class_id);
            read_names_once(hive, key, known);
            goes_on = visit(position, key);
        }
    });
}

/// Sets hidden_icons_records to the names in the key.
void parse_hidden_desktop_icons::read_names_once(hive_h *hive, unsigned long key,
                                                 names_by_key &known)
{
    auto names = known.constFind(key);
    if (names == known.cend()) {
        hidden_icons_records.clear();
        read_record(hive, key, &registry::current_hidden_icon);
        names = known.insert(key, hidden_icons_records);
    }
    hidden_icons_records = *names;
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
        if (!has_ended_early())
            data_records.append(*current_data);
    } else if (current_hidden_icon != nullptr && parsed_key_path.contains(name_space_key)) {
        current_hidden_icon->value = convert_data(hive, value);
        if (!has_ended_early())
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
