#include "reportengine/report_runner.h"

#include <optional>
#include <set>

#include "base/text.h"
#include "reportengine/cell_cache.h"
#include "reportengine/guard/limits.h"
#include "reportengine/language/report_expression.h"
#include "reportengine/value_format.h"
#include "variables/variable_values.h"

namespace cvve::reportengine {

namespace {

struct ColumnPlan {
  ValueKind kind;
  bool numeric;
  bool computed;
  bool line_number;  // $LINE
  int source = -1;   // the result column it is read from
};

class Runner {
 public:
  Runner(const ReportDefinition& def, GuardedConnection* db, const RunSettings& settings)
      : def_(def), db_(db), settings_(settings) {
    for (const auto& [name, value] : settings.variables) values_[VariableKey(name)] = value;
    // Dates are typed the way people write them but compared as the database
    // keeps them.
    for (const ReportVariable& variable : def.variables) {
      if (ToLower(variable.type) != "date") continue;
      auto it = values_.find(VariableKey(variable.name));
      if (it == values_.end()) continue;
      if (const std::optional<std::string> iso = IsoDate(it->second)) it->second = *iso;
    }
    int source = 0;
    for (const ReportColumn& column : def.columns) {
      ColumnPlan plan{KindOf(column.format), column.total || column.average, column.Computed(),
                      ToUpper(column.field) == "$LINE"};
      if (!plan.computed) plan.source = source++;
      plans_.push_back(plan);
    }
    sql_columns_ = source;
  }

  std::string Statement(const std::string& expression, const char* element,
                        const QString* group_value) {
    ExpressionContext context;
    context.variable = [this](std::string_view name) -> std::optional<std::string> {
      const auto it = values_.find(VariableKey(name));
      if (it == values_.end()) return std::nullopt;
      return it->second;
    };
    context.fxa = [this, group_value](std::string_view field) -> std::optional<std::string> {
      if (group_value == nullptr || ToUpper(field) != ToUpper(def_.group_report_field)) {
        return std::nullopt;
      }
      // The value lands between the statement's own quote marks: a quote in
      // it is doubled so that a name like O'Brien stays one literal.
      return ReplaceAll(group_value->toStdString(), "'", "''");
    };
    Evaluation evaluation;
    try {
      evaluation = EvaluateExpression(expression, context);
    } catch (const Error& e) {
      throw Error(def_.source + ": " + element + ": " + e.what());
    }
    for (const std::string& name : evaluation.missing) {
      if (warned_.insert(VariableKey(name)).second) {
        data_.warnings.push_back("the variable " + name + " has no value; it is taken as empty");
      }
    }
    const std::string statement = PrepareStatement(evaluation.value, settings_.user_where);
    if (statement.find_first_not_of(" \t\r\n") == std::string::npos) {
      throw Error(def_.source + ": " + element + ": the statement is empty");
    }
    return statement;
  }

  // Runs `step` of a statement; its failures name the report, the element
  // and the statement, and keep their kind (a guard's stop, a cancel).
  template <class Step>
  auto Guarded(const char* element, const std::string& statement, bool reading, Step&& step) {
    try {
      return step();
    } catch (const GuardError& e) {
      throw GuardError(e.kind(), def_.source + ": the " + element + " was stopped: " + e.what() +
                                     "\nThe statement was: " + statement);
    } catch (const Cancelled&) {
      throw;
    } catch (const StatementError& e) {
      if (reading) throw Error(Reading(element, e.what()));
      // The place the database named stays known, with the statement it is in.
      throw StatementError(Failed(element, statement, e.what()), e.position(), statement,
                           e.what());
    } catch (const Error& e) {
      if (reading) throw Error(Reading(element, e.what()));
      throw Error(Failed(element, statement, e.what()));
    }
  }

  std::string Reading(const char* element, const char* reason) const {
    return def_.source + ": reading the rows of the " + element + " failed: " + reason;
  }

  std::string Failed(const char* element, const std::string& statement, const char* reason) const {
    return def_.source + ": the " + element + " failed on " + db_->Description() + ": " + reason +
           "\nThe statement was: " + statement;
  }

  GuardedQuery Execute(const std::string& statement, const char* element) {
    return Guarded(element, statement, false, [&] { return db_->Execute(statement); });
  }

  bool Next(GuardedQuery& query, const char* element, const std::string& statement) {
    return Guarded(element, statement, true, [&] { return query.Next(); });
  }

  void Check(const QString& stage, long long done, long long total) {
    if (settings_.progress && !settings_.progress(stage, done, total)) throw Cancelled();
  }

  // Reads a statement's rows into `sink`, each formatted by its column and
  // summed into the group's totals; a grouped report's group begins at its
  // first row (`lazy`), so that one without rows leaves no trace.
  void ReadRows(GuardedQuery& query, ReportGroup& group, const char* element,
                const std::string& statement, bool lazy) {
    const int available = query.ColumnCount();
    if (available < sql_columns_) {
      throw Error(def_.source + ": the " + element + " returns " + std::to_string(available) +
                  " columns, but the report has " + std::to_string(sql_columns_) +
                  " columns from the database\nThe statement was: " + statement);
    }
    const std::size_t width = plans_.size();
    group.totals.sum.assign(width, 0);
    group.totals.count.assign(width, 0);
    if (!lazy) sink_->BeginGroup(group);
    std::vector<QString> cells(width);
    const bool native = query.Native();
    // Kept across a grouped report's statements: their values repeat too.
    if (native && cache_.empty()) {
      cache_.reserve(width);
      for (const ColumnPlan& plan : plans_) cache_.emplace_back(plan.kind);
    }
    const long long row_limit = db_->Limits().row_limit;
    long long line = 0;
    while (Next(query, element, statement)) {
      // The limit holds for the run, not only for each of its statements.
      if (data_.totals.rows + line >= row_limit) {
        Guarded(element, statement, true, [&]() -> bool {
          throw GuardError(GuardError::Kind::kRowLimit, RowLimitMessage(db_->Limits()));
        });
      }
      if (line == 0 && lazy) sink_->BeginGroup(group);
      ++line;
      for (std::size_t c = 0; c < width; ++c) {
        const ColumnPlan& plan = plans_[c];
        if (plan.computed) {
          cells[c] = plan.line_number ? QString::number(line) : QString();
          continue;
        }
        std::optional<double> number;
        if (native) {
          // Read in place: most of a long report's cells never become a QVariant.
          const SqlValue value = query.Raw(plan.source);
          cells[c] = cache_[c].Format(value);
          if (plan.numeric) number = NumericValue(value);
        } else {
          const QVariant value = query.Value(plan.source);
          cells[c] = FormatCell(value, plan.kind);
          if (plan.numeric) number = NumericValue(value);
        }
        if (number) {
          group.totals.sum[c] += *number;
          ++group.totals.count[c];
        }
      }
      sink_->Row(cells.data());
      if ((line & 1023) == 0) Check(QStringLiteral("Reading rows"), data_.totals.rows + line, 0);
    }
    group.totals.rows = line;
    if (line > 0 || !lazy) sink_->EndGroup(group);
  }

  void Run(RowSink& sink) {
    sink_ = &sink;
    data_.run_at = QDateTime::currentDateTime();
    for (const ReportVariable& variable : def_.variables) {
      const auto it = values_.find(VariableKey(variable.name));
      const QString value = it == values_.end() ? QString() : QString::fromStdString(it->second);
      data_.variables.push_back({QString::fromStdString(variable.caption),
                                 FormatCell(QVariant(value), KindOf(variable.type))});
    }
    data_.totals.sum.assign(plans_.size(), 0);
    data_.totals.count.assign(plans_.size(), 0);
    if (!def_.grouped) {
      const std::string statement = Statement(def_.statement, "Statement", nullptr);
      sink.Begin(data_);
      Check(QStringLiteral("Running the statement"), 0, 0);
      GuardedQuery query = Execute(statement, "Statement");
      ReportGroup group;
      ReadRows(query, group, "Statement", statement, false);
      data_.totals.Add(group.totals);
      sink.End(data_);
      return;
    }

    const std::string group_statement = Statement(def_.group_statement, "GroupStatement", nullptr);
    sink.Begin(data_);
    Check(QStringLiteral("Finding the groups"), 0, 0);
    std::vector<QString> values;
    {
      GuardedQuery query = Execute(group_statement, "GroupStatement");
      if (query.ColumnCount() < 1) {
        throw Error(def_.source + ": the GroupStatement returns no column");
      }
      while (Next(query, "GroupStatement", group_statement)) {
        values.push_back(RawText(query.Value(0)));
      }
    }
    const ValueKind group_kind = KindOf(def_.group_format);
    const QString title = QString::fromStdString(def_.group_title);
    for (std::size_t g = 0; g < values.size(); ++g) {
      Check(QStringLiteral("Running the groups"), static_cast<long long>(g),
            static_cast<long long>(values.size()));
      const std::string statement = Statement(def_.statement, "Statement", &values[g]);
      GuardedQuery query = Execute(statement, "Statement");
      ReportGroup group;
      group.value = values[g];
      group.display = FormatCell(QVariant(values[g]), group_kind);
      group.heading = title + QStringLiteral(": ") + group.display;
      ReadRows(query, group, "Statement", statement, true);
      data_.totals.Add(group.totals);
    }
    sink.End(data_);
  }

 private:
  const ReportDefinition& def_;
  GuardedConnection* db_;  // none: statements are only evaluated
  const RunSettings& settings_;
  std::map<std::string, std::string> values_;
  std::vector<ColumnPlan> plans_;
  std::vector<CellCache> cache_;  // by column, for rows read in place
  int sql_columns_ = 0;
  std::set<std::string> warned_;
  ReportData data_;  // the header and the totals; the rows go to the sink
  RowSink* sink_ = nullptr;
};

}  // namespace

void RowCollector::Begin(const ReportData& header) { data_ = header; }
void RowCollector::BeginGroup(const ReportGroup& group) { data_.groups.push_back(group); }
void RowCollector::Row(const QString* cells) {
  if (!keep_rows_) return;
  std::vector<QString>& out = data_.groups.back().cells;
  out.insert(out.end(), cells, cells + width_);
}
void RowCollector::EndGroup(const ReportGroup& group) {
  data_.groups.back().totals = group.totals;
}
void RowCollector::End(const ReportData& summary) {
  data_.totals = summary.totals;
  data_.warnings = summary.warnings;
}

void RowTee::Begin(const ReportData& header) {
  for (RowSink* sink : sinks_) sink->Begin(header);
}
void RowTee::BeginGroup(const ReportGroup& group) {
  for (RowSink* sink : sinks_) sink->BeginGroup(group);
}
void RowTee::Row(const QString* cells) {
  for (RowSink* sink : sinks_) sink->Row(cells);
}
void RowTee::EndGroup(const ReportGroup& group) {
  for (RowSink* sink : sinks_) sink->EndGroup(group);
}
void RowTee::End(const ReportData& summary) {
  for (RowSink* sink : sinks_) sink->End(summary);
}

void Aggregate::Add(const Aggregate& other) {
  if (sum.size() < other.sum.size()) {
    sum.resize(other.sum.size(), 0);
    count.resize(other.count.size(), 0);
  }
  for (std::size_t c = 0; c < other.sum.size(); ++c) {
    sum[c] += other.sum[c];
    count[c] += other.count[c];
  }
  rows += other.rows;
}

std::string VariableKey(std::string_view name) {
  std::string key = ToUpper(name);
  if (key.empty() || key[0] != '$') key.insert(key.begin(), '$');
  return key;
}

void CheckVariables(const ReportDefinition& def,
                    const std::map<std::string, std::string>& values) {
  for (const ReportVariable& variable : def.variables) {
    const auto it = values.find(VariableKey(variable.name));
    if (it == values.end() || it->second.empty()) continue;
    if (const std::optional<std::string> problem = VariableValueProblem(variable.type, it->second)) {
      throw BadVariable(def.source + ": " +
                        BadVariableMessage(variable.name, it->second, *problem));
    }
  }
}

ReportData RunReport(const ReportDefinition& def, GuardedConnection& db,
                     const RunSettings& settings) {
  RowCollector sink(def.columns.size());
  StreamReport(def, db, settings, sink);
  return sink.Take();
}

void StreamReport(const ReportDefinition& def, GuardedConnection& db, const RunSettings& settings,
                  RowSink& sink) {
  std::map<std::string, std::string> values;
  for (const auto& [name, value] : settings.variables) values[VariableKey(name)] = value;
  CheckVariables(def, values);
  Runner(def, &db, settings).Run(sink);
}

std::string FirstStatement(const ReportDefinition& def, const RunSettings& settings) {
  Runner runner(def, nullptr, settings);
  return def.grouped ? runner.Statement(def.group_statement, "GroupStatement", nullptr)
                     : runner.Statement(def.statement, "Statement", nullptr);
}

}  // namespace cvve::reportengine
