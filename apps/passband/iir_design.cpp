#include "iir_design.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include "failure.h"

namespace passband_cli {
namespace {

using namespace passband;
using namespace passband::IIRFilters;
using enum passband::IIRFilters::TIirFrequencyTransform;

struct Route {
  std::string_view name;
  TIirFrequencyTransform route;
};

constexpr std::array kRoutes{Route{"zero-pole-analog", ftZeroPoleAnalog},
                             Route{"state-space-analog", ftStateSpaceAnalog},
                             Route{"zero-pole-discrete", ftZeroPoleDiscrete}};

TIirFrequencyTransform RouteFromName(const std::string& name) {
  std::string names;
  for (const Route& route : kRoutes) {
    if (route.name == name) return route.route;
    names += fmt::format("{}{}", names.empty() ? "" : ", ", route.name);
  }
  Fail("--route: '{}' is none of {}", name, names);
}

void SettleFormAndRoute(IirOptions& options) {
  if (options.form.empty()) options.form = options.analog ? "zpk" : "sos";
  if (options.analog && options.form == "sos") {
    Fail("--form: sections are for digital filters; analog ones come as zpk, ss or tf");
  }
  const bool state_space = options.form == "ss";
  if (options.route.empty()) options.route = state_space ? "state-space-analog" : "zero-pole-analog";
  const TIirFrequencyTransform route = RouteFromName(options.route);
  if (state_space && route != ftStateSpaceAnalog) Fail("--route: the form ss is reached by state-space-analog only");
  if (options.analog && route == ftZeroPoleDiscrete) Fail("--route: {} makes digital filters only", options.route);
}

// With an order given, the edges are the cut-offs, and a design takes the decibels of its family only.
IirOrder GivenOrder(const IirDesign& design) {
  constexpr std::int32_t kMostOrder = 1000;  // the library's own limit
  const IirOptions& options = design.options;
  const IirFamily& family = *design.family;
  const IirType& type = *design.requirement.type;
  const std::int32_t most = family.method == TIirFilterMethod::fimElliptic ? MaxIirOrder : kMostOrder;
  if (*options.order < 1 || *options.order > most) {
    Fail("--order: {} is not between 1 and {}, the orders of {} filters", *options.order, most, family.name);
  }
  if (design.requirement.edges.size() != type.cutoffs) {
    Fail("--edges: with --order a {} takes {}; {} given", type.name,
         type.cutoffs == 1 ? "1 frequency, its cut-off" : "2 frequencies, its cut-offs",
         design.requirement.edges.size());
  }
  const auto check = [&family](const char* name, bool takes, bool given) {
    if (takes && !given) Fail("{} is required for a {} filter", name, family.name);
    if (given && !takes)
      Fail("{} does not go with --order for a {} filter, which is designed without", name, family.name);
  };
  check("--ripple", family.has_ripple, options.ripple_db.has_value());
  check("--attenuation", family.has_attenuation, options.attenuation_db.has_value());
  return {*options.order, design.requirement.edges};
}

// Calls the family's design; `outputs` are the results of one of its four forms and, but for state space, the route.
template <class... Outputs>
void Design(const IirDesign& design, Outputs&&... outputs) {
  const std::int32_t order = design.order.order;
  const std::vector<double> cutoffs = design.requirement.ToLibrary(design.order.cutoffs);
  const SignalUtils::TFilterType type = design.requirement.type->type;
  const bool analog = design.requirement.analog;
  const double ripple = design.options.ripple_db.value_or(0);
  const double attenuation = design.options.attenuation_db.value_or(0);
  switch (design.family->method) {
    case TIirFilterMethod::fimButter:
      ButterFilter(order, cutoffs, type, analog, outputs...);
      break;
    case TIirFilterMethod::fimChebyshevI:
      ChebyshevIFilter(order, ripple, cutoffs, type, analog, outputs...);
      break;
    case TIirFilterMethod::fimChebyshevII:
      ChebyshevIIFilter(order, attenuation, cutoffs, type, analog, outputs...);
      break;
    case TIirFilterMethod::fimElliptic:
      EllipticFilter(order, ripple, attenuation, cutoffs, type, analog, outputs...);
      break;
    default:
      BesselFilter(order, cutoffs, type, analog, outputs...);
  }
}

NumberTable One(const char* name, double value) { return {name, 0, 1, {value}}; }

NumberTable Row(const char* name, const TVec& values) {
  NumberTable table{name, 1, 1, {}};
  values.CopyToArray(table.values);
  return table;
}

NumberTable Complex(const char* name, const TVec& values) {
  TVec complex;
  complex.Copy(values);
  complex.ExtendToComplex();
  NumberTable table{name, 2, 2, {}};
  complex.CopyToArray(table.values);
  return table;
}

NumberTable Matrix(const char* name, const TMtx& values) {
  NumberTable table{name, 2, static_cast<std::size_t>(values.Cols()), {}};
  for (std::int32_t row = 0; row < values.Rows(); ++row) {
    for (std::int32_t column = 0; column < values.Cols(); ++column) table.values.push_back(values(row, column));
  }
  return table;
}

// The designs compute in double and store in the precision that their results have; only numbers alone come in double.
std::vector<NumberTable> Numbers(const IirDesign& design, const std::string& form, bool is_double) {
  TVec a;
  TVec b;
  a.Size(0, false, is_double);
  b.Size(0, false, is_double);
  double k = 0;
  const auto stored = [&k, is_double] { return is_double ? k : static_cast<double>(static_cast<float>(k)); };
  if (form == "ss") {
    TMtx states;
    states.Size(0, 0, false, is_double);
    Design(design, states, a, b, k);
    return {Matrix("A", states), Row("B", a), Row("C", b), One("D", stored())};
  }
  const TIirFrequencyTransform route = RouteFromName(design.options.route);
  if (form == "zpk") {
    Design(design, a, b, k, route);
    return {Complex("zeros", a), Complex("poles", b), One("gain", stored())};
  }
  if (form == "tf") {
    Design(design, a, b, route);
    return {Row("numerator", a), Row("denominator", b)};
  }
  Design(design, a, route);
  NumberTable sections = Row("sections", a);
  sections.rank = 2;
  sections.columns = 6;
  return {sections};
}

std::string Title(const IirDesign& design) {
  return fmt::format("{} {} of order {}, {:.6g} {}", design.family->name, design.requirement.type->name,
                     design.order.order, fmt::join(design.order.cutoffs, " to "), design.requirement.Unit());
}

std::string RecordOf(const IirDesign& design) {
  const IirOptions& options = design.options;
  const std::string unit = design.requirement.analog ? "rad_s" : "hz";
  nlohmann::ordered_json record;
  record["kind"] = "iir";
  record["family"] = design.family->name;
  record["type"] = design.requirement.type->name;
  record["analog"] = design.requirement.analog;
  if (!design.requirement.analog) record["rate_hz"] = design.requirement.rate_hz;
  record["order"] = design.order.order;
  record["edges_" + unit] = design.requirement.edges;
  record["cutoffs_" + unit] = design.order.cutoffs;
  if (options.ripple_db) record["ripple_db"] = *options.ripple_db;
  if (options.attenuation_db) record["attenuation_db"] = *options.attenuation_db;
  record["form"] = options.form;
  record["route"] = options.route;
  record["precision"] = options.precision;
  return record.dump(2);
}

void CheckFinite(const IirDesign& design) {
  for (const NumberTable& table : design.numbers) {
    for (const double value : table.values) {
      if (!std::isfinite(value)) {
        Fail("the {} of a {} do not fit into {} precision", table.name, design.title, design.options.precision);
      }
    }
  }
}

}  // namespace

IirDesign DesignIir(const IirOptions& options) {
  IirDesign design;
  design.options = options;
  design.family = &FamilyFromName(options.family);
  design.requirement = CheckRequirement(options);
  CheckDecibels(options);
  SettleFormAndRoute(design.options);
  design.order = options.order ? GivenOrder(design) : EstimateOrder(*design.family, design.requirement, options);
  design.title = Title(design);
  try {
    design.numbers = Numbers(design, design.options.form, design.IsDouble());
  } catch (const ECoreError& error) {
    Fail("cannot design a {}: {}", design.title, error.what());
  }
  CheckFinite(design);
  design.record = RecordOf(design);
  return design;
}

ZeroPole RootsOf(const IirDesign& design) {
  const std::vector<NumberTable> numbers = Numbers(design, "zpk", true);
  const auto roots = [](const NumberTable& table) {
    std::vector<std::complex<double>> result;
    for (std::size_t n = 0; n + 1 < table.values.size(); n += 2) {
      result.emplace_back(table.values[n], table.values[n + 1]);
    }
    return result;
  };
  return {roots(numbers[0]), roots(numbers[1]), numbers[2].values[0]};
}

}  // namespace passband_cli
