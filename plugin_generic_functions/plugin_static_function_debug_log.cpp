#include "plugin_static_function.h"

#include <QDateTime>
#include <QDebug>
#include <QFile>
#include <QLocale>
#include <QMessageLogger>

using namespace Qt::StringLiterals;

QString plugin_static_function::debug_file_path;
int plugin_static_function::type_engine_int = -1;
bool plugin_static_function::bool_cancel_extraction = false;
int plugin_static_function::source_count_int = -1;
QList<struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_system_account>
    plugin_static_function::system_account_QStringList;
qint64 plugin_static_function::examiner_selected_timezone_offset_qint64 = 0;
qint64 plugin_static_function::examiner_machine_timezone_offset_qint64 = 0;
int plugin_static_function::examiner_selected_date_format_int = 0;
bool plugin_static_function::debug_mode_status_bool = false;
bool plugin_static_function::debug_print_in_file_bool = false;
bool plugin_static_function::debug_print_on_terminal_bool = false;
QString plugin_static_function::examiner_machine_os_version_full;
QString plugin_static_function::source_os_version_full;

namespace {

// The source that terminal lines name: a fixed text, whatever folder the library is built in.
constexpr char log_source_file[] = "../plugin_generic_functions/plugin_static_function";
constexpr char log_function[] = "static void plugin_static_function::app_debug(QString, QString)";

void print_on_terminal(const QString &text)
{
    QMessageLogger(log_source_file, __LINE__, log_function).debug().noquote() << text;
}

void append_to_debug_file(const QString &line)
{
    QFile file(plugin_static_function::debug_file_path);
    if (!file.exists())
        return;
    if (!file.open(QIODevice::ReadWrite | QIODevice::Append)) {
        print_on_terminal(u"Debug File Open ----- FAILED-------   Error - "_s + file.errorString());
        return;
    }
    file.write(line.toLocal8Bit() + '\n');
    file.flush();
    file.close();
}

// "static bool name::member(QString, int)" becomes "name::member".
QString qualified_name(const QString &function_info)
{
    QString name = function_info.trimmed();
    if (name.isEmpty())
        return u"FUNCTION INFO IS EMPTY ---FAILED--- debug!!!"_s;
    const qsizetype parenthesis = name.indexOf(u'(');
    name.truncate(parenthesis < 0 ? name.size() - 1 : parenthesis);
    name = name.trimmed();
    return name.mid(name.lastIndexOf(u' ') + 1).trimmed();
}

QString engine_field(int type_engine)
{
    switch (type_engine) {
    case 0:
        return u"][ARKEN_DESK"_s;
    case 1:
        return u"][ARKEN_SWEEP"_s;
    case 2:
        return u"][ARKEN_FIELD"_s;
    default:
        return u"][ -----FAILED----- to find Engine Type ]["_s + QString::number(type_engine);
    }
}

QString log_line(const QString &message, const QString &function_info)
{
    const QString time =
        QLocale::c().toString(QDateTime::currentDateTime(), u"yyyy-MMM-ddThh-mm-ss"_s);
    return u'[' + time + engine_field(plugin_static_function::type_engine_int) +
           "][Artifacts Extraction]["_L1 + qualified_name(function_info) + "]:-- "_L1 + message;
}

} // namespace

plugin_static_function::plugin_static_function(QWidget *parent) : QWidget(parent) {}

void plugin_static_function::set_essentials()
{
    debug_file_path.clear();
    type_engine_int = -1;
    bool_cancel_extraction = false;
    source_count_int = -1;
    system_account_QStringList.clear();
    examiner_selected_timezone_offset_qint64 = 0;
    examiner_machine_timezone_offset_qint64 = 0;
    examiner_selected_date_format_int = 0;
    debug_mode_status_bool = false;
    debug_print_in_file_bool = false;
    debug_print_on_terminal_bool = false;
}

void plugin_static_function::set_engine_type(int type_engine)
{
    type_engine_int = type_engine;
}

void plugin_static_function::set_general_info(
    const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info &general_info)
{
    debug_file_path = general_info.debug_file_path;
    debug_mode_status_bool = general_info.debug_mode_status;
    debug_print_in_file_bool = general_info.debug_print_in_file;
    debug_print_on_terminal_bool = general_info.debug_print_on_terminal;
}

void plugin_static_function::set_examiner_machine_info(
    const struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info &machine_info)
{
    examiner_machine_timezone_offset_qint64 = machine_info.examiner_machine_timezone_offset;
    examiner_machine_os_version_full = machine_info.examiner_machine_os_version_full;
}

void plugin_static_function::set_source_info(
    const struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info)
{
    system_account_QStringList = source_info.system_account_list;
    source_os_version_full = source_info.os_version_full;
}

void plugin_static_function::set_source_count(int source_count)
{
    source_count_int = source_count;
}

void plugin_static_function::set_cancel_extraction(bool cancel_extraction)
{
    bool_cancel_extraction = cancel_extraction;
}

QString plugin_static_function::get_source_count_name()
{
    return u"Source"_s + QString::number(source_count_int);
}

void plugin_static_function::clear_variables_arken_and_artifact_common_source_info(
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info &source_info)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info cleared;
    cleared.source_text_12 = source_info.source_text_12;
    cleared.source_text_13 = source_info.source_text_13;
    source_info = cleared;
}

void plugin_static_function::clear_variables_arken_and_artifact_common_examiner_machine_info(
    struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info &machine_info)
{
    machine_info = {};
}

void plugin_static_function::clear_variables_arken_and_artifact_common_general_info(
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info &general_info)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info cleared;
    cleared.general_flag_5 = general_info.general_flag_5;
    general_info = cleared;
}

void plugin_static_function::app_debug(const QString &message, const QString &function_info)
{
    if (!debug_mode_status_bool)
        return;
    const QString line = log_line(message, function_info);
    if (debug_print_on_terminal_bool)
        print_on_terminal(line);
    if (debug_print_in_file_bool)
        append_to_debug_file(line);
}
