#ifndef RUN_CONTEXT_BACKUP_H
#define RUN_CONTEXT_BACKUP_H

#include "kept_value.h"
#include "plugin_static_function.h"

namespace test_support {

/// Keeps the whole process-wide run context and puts it back at destruction.
class run_context_backup
{
    using context = plugin_static_function;

    template<typename type>
    using kept = kept_value<type>;

    kept<QString> m_debug_file_path{context::debug_file_path};
    kept<int> m_type_engine{context::type_engine_int};
    kept<bool> m_cancel{context::bool_cancel_extraction};
    kept<int> m_source_count{context::source_count_int};
    kept<QList<struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_system_account>> m_accounts{
        context::system_account_QStringList};
    kept<qint64> m_selected_offset{context::examiner_selected_timezone_offset_qint64};
    kept<qint64> m_machine_offset{context::examiner_machine_timezone_offset_qint64};
    kept<int> m_date_format{context::examiner_selected_date_format_int};
    kept<bool> m_debug_mode{context::debug_mode_status_bool};
    kept<bool> m_print_in_file{context::debug_print_in_file_bool};
    kept<bool> m_print_on_terminal{context::debug_print_on_terminal_bool};
    kept<QString> m_machine_version{context::examiner_machine_os_version_full};
    kept<QString> m_source_version{context::source_os_version_full};
};

} // namespace test_support

#endif
