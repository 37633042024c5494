#include "parse_installed_applications.h"

using namespace Qt::StringLiterals;

namespace {

constexpr auto uninstall_key = "Windows\\CurrentVersion\\Uninstall"_L1;
constexpr auto registered_applications_key = "\\RegisteredApplications"_L1;

struct application_value
{
    QLatin1StringView name;
    QString registry::struct_installed_apps::*field;
};

constexpr application_value application_values[] = {
    {"DisplayName"_L1, &registry::struct_installed_apps::display_name},
    {"Publisher"_L1, &registry::struct_installed_apps::publisher},
    {"DisplayVersion"_L1, &registry::struct_installed_apps::display_version},
    {"InstallLocation"_L1, &registry::struct_installed_apps::install_location},
    {"InstallDate"_L1, &registry::struct_installed_apps::install_date},
    {"InstallSource"_L1, &registry::struct_installed_apps::install_source},
    {"URLInfoAbout"_L1, &registry::struct_installed_apps::url_info_about},
    {"UninstallString"_L1, &registry::struct_installed_apps::uninstall_string},
};

} // namespace

parse_installed_applications::parse_installed_applications() = default;

parse_installed_applications::~parse_installed_applications() = default;

int parse_installed_applications::start_registry_parse(QString hive_path, QString key_path,
                                                       bool read_key_values)
{
    m_kind = kind_of(key_path);
    return walk_hive_by_key_path(hive_path, key_path, read_key_values, &registry::current_data);
}

parse_installed_applications::key_kind
parse_installed_applications::kind_of(const QString &key_path)
{
    if (key_path.contains(uninstall_key))
        return key_kind::uninstall;
    if (key_path.contains(registered_applications_key))
        return key_kind::registered_applications;
    if (key_path.contains(compatibility_store_key))
        return key_kind::compatibility_store;
    return key_kind::other;
}

void parse_installed_applications::run_only_multiple_paths(hive_h *hive, unsigned long node)
{
    const QMap<QString, int> children = prepare_the_node_key_child(hive, node, false);
    installed_apps_records.reserve(installed_apps_records.size() + children.size());
    for (auto child = children.cbegin(); child != children.cend(); ++child) {
        const auto child_node = handle(child.value());
        set_current_key_timestamp(hive, child_node);
        struct_installed_apps record;
        record.key_name = child.key();
        record.modified_timestamp = current_key_timestamp;
        record = read_record(hive, child_node, &registry::current_installed_app, record);
        // Else an application would look as if it had none of the values that were not read.
        if (has_ended_early())
            return;
        installed_apps_records.append(record);
    }
}

void parse_installed_applications::find_node_value_length(hive_h *hive, unsigned long value,
                                                          QString value_name)
{
    if (m_kind == key_kind::uninstall) {
        if (current_installed_app != nullptr)
            read_application_value(hive, value, value_name);
        return;
    }
    if (current_data == nullptr || m_kind == key_kind::other)
        return;
    current_data->name = value_name;
    if (m_kind == key_kind::registered_applications)
        current_data->value = convert_data(hive, value);
    else
        current_data->data = convert_data(hive, value, 1);
    if (!has_ended_early())
        data_records.append(*current_data);
}

void parse_installed_applications::read_application_value(hive_h *hive, unsigned long value,
                                                          const QString &value_name)
{
    for (const application_value &known : application_values) {
        if (value_name == known.name) {
            current_installed_app->*known.field = convert_data(hive, value);
            return;
        }
    }
}

QString parse_installed_applications::convert_data(hive_h *hive, unsigned long value)
{
    return value_text(hive, value);
}

QByteArray parse_installed_applications::convert_data(hive_h *hive, unsigned long value,
                                                      int /*unused*/)
{
    return value_bytes(hive, value);
}

int parse_installed_applications::convert_data(hive_h *hive, unsigned long value,
                                               QString /*unused*/)
{
    return value_type(hive, value);
}
