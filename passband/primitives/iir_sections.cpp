// Creation of cascades of second-order sections.
#include <algorithm>
#include <cstddef>
#include <new>
#include <tuple>
#include <type_traits>

#include "passband/primitives/iir.h"
#include "passband/primitives/iir_sections_internal.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "passband/primitives/iir_sections.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "passband/primitives/iir_sections_groups-inl.h"
#include "passband/primitives/iir_sections_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace passband::primitives::HWY_NAMESPACE {
namespace {

template <Element T>
void SetFunctions(IirSectionsState<T>& filter) {
  filter.last_states == 0 ? SetPlainFunctions(filter) : SetGroupedFunctions(filter);
}

template <class T>
using Setter = void (*)(IirSectionsState<T>&);

const PerElement<Setter>* Setters() {
  static constexpr PerElement<Setter> table{&SetFunctions<float>, &SetFunctions<double>, &SetFunctions<TSCplx>,
                                            &SetFunctions<TCplx>};
  return &table;
}

}  // namespace
}  // namespace passband::primitives::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace passband::primitives {
namespace {

using detail::IirBundleOf;
using detail::IirLanes;
using detail::IirSection;
using detail::IirSectionsState;
using detail::kIirBundle;
using detail::kIirLanes;
using detail::kIirMostGrouped;

HWY_EXPORT(Setters);

constexpr std::size_t Lines(std::size_t bytes) {
  return (bytes + kIirStateAlignment - 1) / kIirStateAlignment * kIirStateAlignment;
}

// Bytes behind the record: bundles in grouped form, arrays in plain form; one of the two is used.
template <Element T>
struct Layout {
  static constexpr std::size_t kParts = IirSectionsState<T>::kParts;
  static constexpr std::size_t kRecord = Lines(sizeof(IirSectionsState<T>));
  std::size_t whole_bundles;  // without the last one
  std::size_t last_states;
  std::size_t length;  // of the arrays of the plain form

  explicit Layout(std::size_t sections)
      : whole_bundles((sections - 1) / kIirBundle), length((sections + kIirLanes - 1) / kIirLanes * kIirLanes) {
    const std::size_t rest = sections - whole_bundles * kIirBundle;
    last_states = rest > 2 ? 8 : 2 * rest;
  }
  std::size_t Bytes(std::size_t sections) const {
    const std::size_t plain = (5 + 2 * kParts) * length * sizeof(double);
    if (sections > kIirMostGrouped) return plain;
    const std::size_t last = last_states == 2   ? sizeof(IirBundleOf<2, kParts>)
                             : last_states == 4 ? sizeof(IirBundleOf<4, kParts>)
                                                : sizeof(IirBundleOf<8, kParts>);
    return std::max(plain, whole_bundles * sizeof(IirBundleOf<8, kParts>) + last);
  }
};

template <std::size_t kStates, std::size_t kParts>
bool MakeBundle(void* memory, const IirSection* sections, std::size_t count) {
  auto* const bundle = new (memory) IirBundleOf<kStates, kParts>{};
  return detail::MakeIirBundle(sections, count, bundle->tables);
}

// Sets the filter up in grouped form. False when that form does not suit the taps.
template <Element T>
bool MakeGroups(const Layout<T>& layout, const IirSection* sections, std::size_t count, IirSectionsState<T>& filter) {
  constexpr std::size_t kParts = Layout<T>::kParts;
  if (count > kIirMostGrouped) return false;
  if (std::is_same_v<RealOf<T>, double> && detail::IirGroupsMayBeNoisier(sections, count)) return false;
  std::byte* const memory = reinterpret_cast<std::byte*>(&filter) + Layout<T>::kRecord;
  filter.bundles = reinterpret_cast<IirBundleOf<8, kParts>*>(memory);
  filter.bundle_count = layout.whole_bundles;
  filter.last = filter.bundles + layout.whole_bundles;
  filter.last_states = layout.last_states;
  for (std::size_t i = 0; i < layout.whole_bundles; ++i) {
    if (!MakeBundle<8, kParts>(filter.bundles + i, sections + i * kIirBundle, kIirBundle)) return false;
  }
  const std::size_t rest = count - layout.whole_bundles * kIirBundle;
  sections += count - rest;
  switch (layout.last_states) {
    case 2:
      return MakeBundle<2, kParts>(filter.last, sections, rest);
    case 4:
      return MakeBundle<4, kParts>(filter.last, sections, rest);
    default:
      return MakeBundle<8, kParts>(filter.last, sections, rest);
  }
}

template <Element T, class Read>
void MakePlain(const Layout<T>& layout, std::size_t count, const Read& read, IirSectionsState<T>& filter) {
  auto* next = reinterpret_cast<double*>(reinterpret_cast<std::byte*>(&filter) + Layout<T>::kRecord);
  const std::size_t length = layout.length;
  std::fill_n(next, (5 + 2 * Layout<T>::kParts) * length, 0.0);
  const std::size_t first = length - count;
  filter.last_states = 0;
  filter.lanes = {.first = first,
                  .length = length,
                  .b0 = next,
                  .b1 = next + length,
                  .b2 = next + 2 * length,
                  .a1 = next + 3 * length,
                  .a2 = next + 4 * length,
                  .z1 = next + 5 * length,
                  .z2 = next + (5 + Layout<T>::kParts) * length};
  for (std::size_t k = 0; k < count; ++k) {
    const IirSection section = read(k);
    filter.lanes.b0[first + k] = section.b0;
    filter.lanes.b1[first + k] = section.b1;
    filter.lanes.b2[first + k] = section.b2;
    filter.lanes.a1[first + k] = section.a1;
    filter.lanes.a2[first + k] = section.a2;
  }
}

}  // namespace

template <Element T>
std::size_t IirSectionsStateSize(std::int32_t sections) noexcept {
  const auto count = static_cast<std::size_t>(sections);
  return kIirStateAlignment + Layout<T>::kRecord + Layout<T>(count).Bytes(count);
}

template <Element T>
Status IirSectionsCreate(const RealOf<T>* taps, std::int32_t sections, void* memory, IirHandle& state) noexcept {
  static_assert(std::is_trivially_destructible_v<IirSectionsState<T>>);
  if (sections < 1) return Status::BadSize;
  if (taps == nullptr || memory == nullptr) return Status::NullPointer;
  const auto count = static_cast<std::size_t>(sections);
  for (std::size_t k = 0; k < count; ++k) {
    if (taps[6 * k + 3] == 0) return Status::DivisionByZero;
  }
  const auto read = [taps](std::size_t k) {
    const RealOf<T>* const of = taps + 6 * k;
    const auto divided = [of](std::size_t i) { return static_cast<double>(of[i]) / static_cast<double>(of[3]); };
    return IirSection{divided(0), divided(1), divided(2), divided(4), divided(5)};
  };
  IirSection first_sections[kIirMostGrouped];
  for (std::size_t k = 0; k < std::min(count, kIirMostGrouped); ++k) first_sections[k] = read(k);

  const Layout<T> layout(count);
  auto* const fresh = new (AlignIirState(memory)) IirSectionsState<T>{};
  if (!MakeGroups(layout, first_sections, count, *fresh)) MakePlain(layout, count, read, *fresh);
  std::get<HWY_NAMESPACE::Setter<T>> (*HWY_DYNAMIC_DISPATCH(Setters)())(*fresh);
  state.reset(fresh);
  return Status::Ok;
}

template std::size_t IirSectionsStateSize<float>(std::int32_t) noexcept;
template std::size_t IirSectionsStateSize<double>(std::int32_t) noexcept;
template std::size_t IirSectionsStateSize<TSCplx>(std::int32_t) noexcept;
template std::size_t IirSectionsStateSize<TCplx>(std::int32_t) noexcept;

template Status IirSectionsCreate<float>(const float*, std::int32_t, void*, IirHandle&) noexcept;
template Status IirSectionsCreate<double>(const double*, std::int32_t, void*, IirHandle&) noexcept;
template Status IirSectionsCreate<TSCplx>(const float*, std::int32_t, void*, IirHandle&) noexcept;
template Status IirSectionsCreate<TCplx>(const double*, std::int32_t, void*, IirHandle&) noexcept;

}  // namespace passband::primitives
#endif  // HWY_ONCE
