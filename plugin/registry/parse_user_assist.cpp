#include "parse_user_assist.h"

parse_user_assist::parse_user_assist() = default;

parse_user_assist::~parse_user_assist() = default;

void parse_user_assist::run_only_multiple_paths(hive_h *hive, unsigned long node)
{
    const QMap<QString, int> class_ids = prepare_the_node_key_child(hive, node, false);
    for (auto class_id = class_ids.cbegin(); class_id != class_ids.cend(); ++class_id) {
        current_class_id = class_id.key();
        run_only_multiple(hive, class_id.value());
    }
}

bool parse_user_assist::run_only_multiple(hive_h *hive, int node)
{
    const QMap<QString, int> children = prepare_the_node_key_child(hive, handle(node), false);
    if (children.isEmpty())
        return false;
    struct_user_asist record;
    current_user_assist = &record;
    for (const int child : children) {
        values_of_the_node(hive, handle(child));
        run_only_multiple_recurse(hive, child, {});
    }
    current_user_assist = nullptr;
    current_data = nullptr;
    return true;
}

void parse_user_assist::find_node_value_length(hive_h *hive, unsigned long value,
                                               QString value_name)
{
    if (current_user_assist == nullptr)
        return;
    current_user_assist->value_name = value_name;
    current_user_assist->class_id = current_class_id;
    current_user_assist->value_data = convert_data(hive, value, 1);
    if (!has_ended_early())
        user_assist_records.append(*current_user_assist);
}

QString parse_user_assist::convert_data(hive_h *hive, unsigned long value)
{
    return value_text(hive, value);
}

QByteArray parse_user_assist::convert_data(hive_h *hive, unsigned long value, int /*unused*/)
{
    return value_bytes(hive, value);
}

int parse_user_assist::convert_data(hive_h *hive, unsigned long value, QString /*unused*/)
{
    return value_type(hive, value);
}
