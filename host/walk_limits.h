#ifndef WALK_LIMITS_H
#define WALK_LIMITS_H

#include <QtGlobal>

/// What the plug-in reads of a hive before it gives up. The host must know it to tell the examiner
/// where rows may be missing; tst_key_check holds it against the plug-in.
namespace walk_limits {

// Of one walk over a hive.
inline constexpr qint64 hive_lengths = 4;
inline constexpr qint64 refusals = 4096; ///< that use a walk up
inline constexpr qint64 refused_bytes_per_byte = 16;
inline constexpr qint64 indexed_list_cost = 256;

// Of what a row repeats.
inline constexpr qint64 cost_of_a_drive = 128; ///< in a program's name, after the first
inline constexpr qint64 longest_key_name = 255;
inline constexpr qint64 cost_of_an_excess_letter = 3; ///< of a class id that is longer
inline constexpr qint64 letters_for_one = 8; ///< of all others, each that many cost as much

// Of the keys that name the icons of one hive.
inline constexpr qint64 least_icon_budget = qint64(128) << 20;
inline constexpr qint64 icon_budget_in_hive_lengths = 128;
inline constexpr qint64 icon_walks_per_hive_length = 16;
inline constexpr qint64 cost_of_an_icon = 1024;
inline constexpr qint64 cost_of_a_letter = 4; ///< of its name

} // namespace walk_limits

#endif
