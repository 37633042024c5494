#include "hive_generator.h"

#include "grown_hive.h"
#include "random_damage.h"

namespace evidence {

namespace {

/// A large hive would leave nothing to choose its damage with.
constexpr qsizetype damage_choices_size = 64;

} // namespace

generated_hive generate_hive(byte_choices &choices, hive_kind kind, const QVariantList &artifacts)
{
    byte_choices damage_choices = choices.part(damage_choices_size);
    grown_hive hive(choices, kind, artifacts);
    hive_damage damage(hive.bytes());
    const QStringList names = damage_by_choices(damage, hive, damage_choices);
    return {damage.bytes(), names};
}

} // namespace evidence
