#include "reportengine/export/sheet_rows.h"

#include <cmath>
#include <optional>

namespace cvve::reportengine {

namespace {

using Type = SheetCell::Type;

SheetCell Text(const QString& text) {
  SheetCell cell;
  cell.type = text.isEmpty() ? Type::kEmpty : Type::kText;
  cell.text = text;
  return cell;
}

SheetCell Number(double value, ValueKind kind, bool average = false) {
  SheetCell cell;
  cell.type = Type::kNumber;
  cell.number = value;
  cell.kind = kind;
  cell.average = average;
  return cell;
}

// "1,234.50", "-1,234", "1234": digits with "," between groups and at most
// one "."; nothing else.
std::optional<double> GroupedNumber(QString text) {
  text.remove(QLatin1Char(','));
  if (text.isEmpty()) return std::nullopt;
  for (const QChar c : text) {
    if (!c.isDigit() && c != QLatin1Char('.') && c != QLatin1Char('-')) return std::nullopt;
  }
  bool ok = false;
  const double value = text.toDouble(&ok);
  if (!ok || !std::isfinite(value)) return std::nullopt;
  return value;
}

double ToCents(double value) { return std::round(value * 100.0) / 100.0; }

}  // namespace

SheetCell CellValue(const QString& shown, ValueKind kind) {
  if (shown.isEmpty()) return Text(shown);
  switch (kind) {
    case ValueKind::kDate: {
      const QDate date = QDate::fromString(shown, QStringLiteral("MM/dd/yyyy"));
      if (!date.isValid()) break;
      SheetCell cell;
      cell.type = Type::kDate;
      cell.date = date;
      cell.kind = kind;
      return cell;
    }
    case ValueKind::kCurrency: {
      // "$1,234.50" and "-$1,234.50"
      const bool negative = shown.startsWith(QLatin1Char('-'));
      QString digits = shown.mid(negative ? 1 : 0);
      if (!digits.startsWith(QLatin1Char('$'))) break;
      digits.remove(0, 1);
      if (digits.startsWith(QLatin1Char('-'))) break;
      if (const std::optional<double> value = GroupedNumber(digits)) {
        return Number(negative ? -*value : *value, kind);
      }
      break;
    }
    case ValueKind::kNumber:
    case ValueKind::kInteger:
      if (const std::optional<double> value = GroupedNumber(shown)) return Number(*value, kind);
      break;
    case ValueKind::kText:
      break;
  }
  return Text(shown);
}

QString PlainNumber(const SheetCell& cell) {
  if (cell.kind == ValueKind::kInteger && !cell.average) {
    return QString::number(static_cast<qint64>(std::llround(cell.number)));
  }
  QString text = QString::number(ToCents(cell.number) + 0.0, 'f', 2);
  if (cell.kind != ValueKind::kCurrency) {
    while (text.endsWith(QLatin1Char('0'))) text.chop(1);
    if (text.endsWith(QLatin1Char('.'))) text.chop(1);
  }
  return text;
}

ReportSheet::ReportSheet(const ReportDefinition& def, const ReportData& data)
    : def_(def), data_(data) {
  marker_ = def.TotalsRow() || def.AveragesRow();
  if (marker_) columns_.push_back({QStringLiteral("Summary"), ValueKind::kText, 1440});
  const int shown_group = def.grouped ? def.GroupColumn() : -1;
  added_group_ = def.grouped && shown_group < 0;
  if (added_group_) {
    group_column_ = static_cast<int>(columns_.size());
    columns_.push_back({QString::fromStdString(def.group_title.empty() ? std::string("Group")
                                                                       : def.group_title),
                        KindOf(def.group_format), 1440});
  }
  first_ = columns_.size();
  if (shown_group >= 0) group_column_ = static_cast<int>(first_) + shown_group;
  for (const ReportColumn& column : def.columns) {
    kinds_.push_back(KindOf(column.format));
    columns_.push_back({QString::fromStdString(column.title), kinds_.back(), column.width});
  }
}

QString ReportSheet::Marker(const SheetRow& row) {
  if (row.kind == SheetRowKind::kData) return QString();
  const QString what =
      row.kind == SheetRowKind::kTotal ? QStringLiteral("Total") : QStringLiteral("Average");
  return row.grand ? QStringLiteral("Grand ") + what : what;
}

SheetRow ReportSheet::Begin(SheetRowKind kind, bool grand) const {
  SheetRow row;
  row.kind = kind;
  row.grand = grand;
  row.cells.resize(columns_.size());
  if (marker_) row.cells[0] = Text(Marker(row));
  return row;
}

void ReportSheet::ForEachRow(const std::function<void(const SheetRow&)>& visit) const {
  const std::size_t width = def_.columns.size();
  for (const ReportGroup& group : data_.groups) {
    const SheetCell group_value =
        added_group_ ? CellValue(group.display, KindOf(def_.group_format)) : SheetCell();
    for (std::size_t start = 0; width > 0 && start + width <= group.cells.size();
         start += width) {
      SheetRow row = Begin(SheetRowKind::kData, false);
      if (added_group_) row.cells[static_cast<std::size_t>(group_column_)] = group_value;
      for (std::size_t c = 0; c < width; ++c) {
        row.cells[first_ + c] = CellValue(group.cells[start + c], kinds_[c]);
      }
      visit(row);
    }
    if (def_.grouped) Summary(&group, group.totals, false, visit);
  }
  Summary(nullptr, data_.totals, true, visit);
}

void ReportSheet::Summary(const ReportGroup* group, const Aggregate& totals, bool grand,
                          const std::function<void(const SheetRow&)>& visit) const {
  for (const bool average : {false, true}) {
    if (average ? !def_.AveragesRow() : !def_.TotalsRow()) continue;
    // An ungrouped report's one summary is its "Total", as printed.
    SheetRow row =
        Begin(average ? SheetRowKind::kAverage : SheetRowKind::kTotal, grand && def_.grouped);
    // A group's rows carry its value, so that a filter on it keeps them.
    if (group != nullptr && group_column_ >= 0) {
      row.cells[static_cast<std::size_t>(group_column_)] =
          CellValue(group->display, KindOf(def_.group_format));
    }
    for (std::size_t c = 0; c < def_.columns.size() && c < totals.sum.size(); ++c) {
      const ReportColumn& column = def_.columns[c];
      if (!(average ? column.average : column.total)) continue;
      const double sum = static_cast<double>(totals.sum[c]);
      if (!average) {
        row.cells[first_ + c] = Number(sum, kinds_[c]);
      } else if (totals.count[c] > 0) {
        row.cells[first_ + c] =
            Number(sum / static_cast<double>(totals.count[c]), kinds_[c], true);
      }
    }
    visit(row);
  }
}

}  // namespace cvve::reportengine
