#include "BlackBoxJson.h"

#include "Arguments.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace clmctl {
namespace {

using Json = nlohmann::ordered_json;

template <typename T>
Json OrNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json LabelValue(const BoardValue& value) {
  if (!value.value) return nullptr;
  if (!value.label->number) return *value.value;
  return OrNull(commandline::SignedFrom(*value.value));
}

Json SectionJson(const BoardFile& board, BoardSection section) {
  Json object = Json::object();
  for (const BoardValue& value : board.values) {
    if (value.label->section == section) object[std::string(value.label->key)] = LabelValue(value);
  }
  return object;
}

Json ResetJson(const ResetRecord& reset) {
  Json object;
  object["time"] = TextOrNull(reset.time);
  object["reason"] = TextOrNull(reset.reason);
  object["category"] = TextOrNull(reset.category);
  object["extended_info"] = TextOrNull(reset.extendedInfo);
  object["partition"] = TextOrNull(reset.partition);
  object["fallback"] = reset.damaged ? Json(nullptr) : Json(reset.fallback);
  object["reset_counter"] = OrNull(reset.CounterValue());
  object["damaged"] = reset.damaged;
  object["text"] = reset.text;
  return object;
}

const char* QuantityName(Quantity quantity) { return quantity == Quantity::Temperature ? "temperature" : "fan_speed"; }

const char* StateName(RowState state) {
  switch (state) {
    case RowState::Good:
      return "good";
    case RowState::OtherColumns:
      return "other_columns";
    case RowState::Damaged:
      break;
  }
  return "damaged";
}

const char* StateName(ReadingState state) {
  switch (state) {
    case ReadingState::Good:
      return "good";
    case ReadingState::Failed:
      return "failed";
    case ReadingState::NotYet:
      break;
  }
  return "not_yet_measured";
}

/// Sets a value under the key of its quantity's unit, and null under the other one.
void SetValue(Json& object, const std::string& what, Quantity quantity, const Json& value) {
  const bool temperature = quantity == Quantity::Temperature;
  object[what + "_millicelsius"] = temperature ? value : Json(nullptr);
  object[what + "_rpm"] = temperature ? Json(nullptr) : value;
}

Json RoundedMean(const ColumnStatistics& statistics) {
  return statistics.mean ? Json(std::lround(*statistics.mean)) : Json(nullptr);
}

}  // namespace

Json BoardJson(const BoardFile& board) {
  Json object = SectionJson(board, BoardSection::Board);
  object["power_supply"] = board.hasProductData ? SectionJson(board, BoardSection::Psu) : Json(nullptr);
  object["filter"] = board.hasProductData ? SectionJson(board, BoardSection::Filter) : Json(nullptr);
  object["resets"] = Json::array();
  for (const ResetRecord& reset : board.resets) object["resets"].push_back(ResetJson(reset));
  return object;
}

Json ConfigJson(const ConfigFile& config) {
  Json object;
  for (std::size_t i = 0; i < ConfigKeys().size(); ++i) {
    object[std::string(ConfigKeys()[i].key)] = OrNull(config.paths[i]);
  }
  return object;
}

Json TraceColumnJson(const TraceColumn& column, const ColumnStatistics& statistics) {
  Json object;
  object["name"] = column.name;
  object["quantity"] = QuantityName(column.quantity);
  SetValue(object, "last", column.quantity, statistics.last ? OrNull(statistics.last->Value()) : Json(nullptr));
  SetValue(object, "lowest", column.quantity, OrNull(statistics.minimum));
  SetValue(object, "mean", column.quantity, RoundedMean(statistics));
  SetValue(object, "highest", column.quantity, OrNull(statistics.maximum));
  object["readings"] = statistics.readings;
  object["failed_readings"] = statistics.errors;
  object["since_start_min_millicelsius"] = OrNull(column.minimum);
  object["since_start_max_millicelsius"] = OrNull(column.maximum);
  return object;
}

Json TraceRowJson(const TraceFile& trace, const TraceRow& row) {
  Json object;
  object["time"] = row.state == RowState::Damaged ? Json(nullptr) : Json(UtcText(row.time));
  object["state"] = StateName(row.state);
  object["line"] = row.line;
  object["readings"] = Json::array();
  for (std::size_t i = 0; row.state == RowState::Good && i < row.readings.size(); ++i) {
    const TraceColumn& column = trace.columns[i];
    Json reading;
    reading["name"] = column.name;
    reading["state"] = StateName(row.readings[i].state);
    SetValue(reading, "value", column.quantity, OrNull(row.readings[i].Value()));
    object["readings"].push_back(reading);
  }
  object["text"] = row.text;
  return object;
}

}  // namespace clmctl
