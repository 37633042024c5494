#include "fuzz_main.h"
#include "log_capture.h"
#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "registry.h"
#include "registry_data.h"
#include "text_operations.h"
#include "typed_text.h"
#include "windows_installed_applications_winos.h"

#include <iterator>
#include <limits>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

using helpers = plugin_static_function;
using text_operation = void (*)(const QString &);

void require(bool holds, const char *reason)
{
    if (!holds)
        throw std::logic_error(reason);
}

windows_installed_applications_winos &worker()
{
    static windows_installed_applications_winos object;
    return object;
}

/// An operation that takes the text and returns one.
template<QString (*operation)(const QString &)>
void convert(const QString &text)
{
    operation(text);
}

/// An operation on a path, a prefix and a source kind: the text is the path, then the prefix too.
template<QString (*operation)(const QString &, const QString &, const QString &)>
void convert_path(const QString &text)
{
    const qsizetype half = text.size() / 2;
    for (const QString &kind : {QString(), u"macOS_Home_Directory"_s}) {
        operation(text, text.left(half), kind);
        operation(text.mid(half), text, kind);
    }
}

void show_source_file(const QString &text)
{
    const auto shown = helpers::get_final_artifact_source_file(text, {}, {});
    require(shown.display_path.startsWith(u'/') || text.trimmed().isEmpty(), "no leading slash");
}

void extract_user_name(const QString &text)
{
    helpers::system_account_QStringList = {{u"ann"_s, {}}};
    helpers::extract_user_name_from_sourcefile(text, text.left(text.size() / 3));
}

void read_file_times(const QString &text)
{
    helpers::get_posix_timestamp(text, u"/nowhere/"_s);
    helpers::get_posix_timestamp(u"nowhere"_s, text);
}

void read_used_dates(const QString &text)
{
    helpers::extract_used_date(text);
}

void read_timezone(const QString &text)
{
    helpers::convert_timezone_to_seconds_1(text);
}

void read_os_version(const QString &text)
{
    helpers::examiner_machine_os_version_full = text;
    helpers::source_os_version_full = text;
    helpers::get_examiner_machine_os_scan_version();
    helpers::get_source_os_scan_version(text);
}

void show_epoch_at_offsets(const QString &text)
{
    for (const qint64 offset : {std::numeric_limits<qint64>::min(), qint64(-3600), qint64(0),
                                std::numeric_limits<qint64>::max()}) {
        helpers::examiner_selected_timezone_offset_qint64 = offset;
        helpers::examiner_machine_timezone_offset_qint64 = -(offset / 2);
        for (const int format : {0, 1, 2, 3}) {
            helpers::examiner_selected_date_format_int = format;
            helpers::convert_epoch_to_custom(text);
            helpers::convert_timestamp_to_human_readable_with_timezone(text);
            helpers::convert_timestamp_to_human_readable_in_GMT(text);
        }
    }
}

void tell_media_kind(const QString &text)
{
    static const plugin_helper_functions helper;
    helper.check_is_image_by_extn(text);
    helper.check_is_video_by_extn(text);
    helper.check_is_audio_by_extn(text);
}

void compare_lists(const QString &text)
{
    const QStringList parts = text.split(u',');
    require(helpers::get_unmatched_varible_list_of_parentlist(parts, parts).isEmpty(),
            "a list lacks its own entries");
}

void decode_program_name(const QString &text)
{
    const QString decoded = worker().decrypt_program_name(text);
    require(worker().decrypt_program_name(decoded) == text, "decoding is not its own inverse");
}

void read_numbers(const QString &text)
{
    const QByteArray bytes = utf16le(text);
    for (const auto order : {windows_installed_applications_winos::little_endian,
                             windows_installed_applications_winos::big_endian}) {
        worker().hex_to_decimal_fourbytes(bytes, order);
        worker().hex_to_decimal_eight_bytes(bytes, order);
    }
    registry().epoc_time_conversion(bytes);
}

void show_install_date(const QString &text)
{
    worker().get_install_date(text);
}

void show_windows_path(const QString &text)
{
    require(!worker().prepare_windows_path(text).contains(u'/'), "a slash in a Windows path");
}

void write_log_line(const QString &text)
{
    static const log_capture log;
    log.clear();
    helpers::set_general_info(log.general_info());
    helpers::app_debug(text, text);
    helpers::debug_mode_status_bool = false;
}

/// What a table could not hold becomes a replacement character.
void decode_by_type(const QString &text)
{
    for (int type = -1; type <= 12; ++type) {
        const auto decoded = text_by_type(utf16le(text), type);
        require(!decoded || decoded->text.isValidUtf16(), "half of a surrogate pair");
    }
}

constexpr text_operation operations[] = {
    convert<helpers::get_filtered_number_value>,
    convert<helpers::get_filtered_boolean_value>,
    convert<helpers::get_filtered_cfstring_value>,
    convert<helpers::get_filtered_string_value>,
    convert<helpers::get_filtered_wherefrom_value>,
    convert<helpers::get_filtered_date_value>,
    convert<helpers::convert_string_to_unicode>,
    convert<helpers::convert_apple_time_to_epoch>,
    convert<helpers::convert_google_time_to_epoch>,
    convert<helpers::get_human_readable_time>,
    convert<helpers::convert_human_readable_to_epoch>,
    convert<helpers::convert_human_readable_to_epoch_1>,
    convert<helpers::convert_human_readable_to_epoch_2>,
    convert<helpers::convert_T_Z_time_to_epoch>,
    convert<helpers::human_readable_size>,
    convert<helpers::mining_suffix>,
    convert<helpers::mining_size>,
    convert_path<helpers::get_relative_file_path>,
    convert_path<helpers::get_complete_file_path>,
    show_source_file,
    extract_user_name,
    read_file_times,
    read_used_dates,
    read_timezone,
    read_os_version,
    show_epoch_at_offsets,
    tell_media_kind,
    compare_lists,
    decode_program_name,
    read_numbers,
    show_install_date,
    show_windows_path,
    write_log_line,
    decode_by_type,
};
static_assert(std::size(operations) == text_operation_count, "make_seeds has seeds for each");

/// The first byte chooses the operation, its highest bit whether the rest is UTF-16 or UTF-8.
void run_operation(const QByteArray &input)
{
    if (input.isEmpty())
        return;
    const auto head = static_cast<quint8>(input.front());
    const QByteArray rest = input.mid(1);
    const QString text = head >= 0x80 ? from_utf16le(rest) : QString::fromUtf8(rest);
    operations[(head & 0x7f) % std::size(operations)](text);
}

} // namespace

FUZZ_MAIN(run_operation)
