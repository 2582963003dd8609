// Feeds the report engine's other side hostile rows: the bytes become the
// columns of a report (formats, widths from nothing to far beyond the paper,
// alignments, totals, grouping, page settings) and rows of NULLs, binary
// blobs, very long texts, extreme and non-finite numbers and odd dates. They
// are stored in a scratch SQLite file, run through the guarded connection and
// the report runner, laid out in pages, and written as PDF and CSV. Failures
// must be cvve::Error; nothing may crash or hang.
#include <sqlite3.h>
#include <unistd.h>

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "base/error.h"
#include "reportengine/export/csv_writer.h"
#include "reportengine/export/xlsx_writer.h"
#include "reportengine/guard/guarded_connection.h"
#include "reportengine/page_renderer.h"
#include "reportengine/paginator.h"
#include "reportengine/report_runner.h"

namespace {

namespace re = cvve::reportengine;

// Bounds that keep one input to a moment: long enough texts to cross pages
// and widths, few enough that a replay of the corpus stays quick.
constexpr int kMaxRows = 60;
constexpr std::size_t kMaxText = 400;
constexpr std::size_t kMaxTotalText = 4 * 1024;

// Reads the input front to back; past its end every read gives zeros.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  bool Done() const { return pos_ >= size_; }
  std::uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  std::uint64_t Word() {
    std::uint64_t value = 0;
    for (int i = 0; i < 8; ++i) value = value << 8 | Byte();
    return value;
  }
  std::string Text(std::size_t length) {
    const std::size_t n = std::min(length, size_ - std::min(pos_, size_));
    std::string text(reinterpret_cast<const char*>(data_ + pos_), n);
    pos_ += n;
    return text;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t pos_ = 0;
};

const char* const kFormats[] = {"Currency", "Number", "Integer", "Date", "String", "", "currency",
                                "%d%s%n"};
const char* const kAlignments[] = {"Left", "Right", "Center", "", "Justify"};
const char* const kOddDates[] = {"2026-02-31", "0000-00-00", "9999-12-31 23:59:59", "13/45/2026",
                                 "2026-03-05T10:00:00Z", "-0001-01-01", "2026-3-5", ""};

void Bind(sqlite3_stmt* insert, int column, Bytes& in, std::size_t& text_budget) {
  switch (in.Byte() % 7) {
    case 0:
      sqlite3_bind_null(insert, column);
      break;
    case 1:
      sqlite3_bind_int64(insert, column, static_cast<sqlite3_int64>(in.Word()));
      break;
    case 2: {
      const std::uint64_t bits = in.Word();
      double number;
      std::memcpy(&number, &bits, sizeof number);  // NaN and infinities included
      sqlite3_bind_double(insert, column, number);
      break;
    }
    case 3: {
      // A short piece, repeated into a very long text.
      std::string piece = in.Text(in.Byte() % 32);
      const std::size_t repeat = 1 + static_cast<std::size_t>(in.Byte()) * in.Byte();
      std::string text;
      while (text.size() < kMaxText && text.size() < piece.size() * repeat && !piece.empty()) {
        text += piece;
      }
      text.resize(std::min(text.size(), text_budget));
      text_budget -= text.size();
      sqlite3_bind_text(insert, column, text.data(), static_cast<int>(text.size()),
                        SQLITE_TRANSIENT);
      break;
    }
    case 4: {
      const std::string blob = in.Text(in.Byte());
      sqlite3_bind_blob(insert, column, blob.data(), static_cast<int>(blob.size()),
                        SQLITE_TRANSIENT);
      break;
    }
    case 5: {
      const char* date = kOddDates[in.Byte() % std::size(kOddDates)];
      sqlite3_bind_text(insert, column, date, -1, SQLITE_STATIC);
      break;
    }
    default: {
      const std::string text = in.Text(in.Byte() % 48);
      sqlite3_bind_text(insert, column, text.data(), static_cast<int>(text.size()),
                        SQLITE_TRANSIENT);
      break;
    }
  }
}

// The rows into a new SQLite file; false when SQLite would not take them.
bool Store(const std::string& path, int columns, Bytes& in) {
  sqlite3* db = nullptr;
  if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
    sqlite3_close(db);
    return false;
  }
  std::string create = "CREATE TABLE T (";
  std::string insert_sql = "INSERT INTO T VALUES (";
  for (int c = 0; c < columns; ++c) {
    create += (c ? ", c" : "c") + std::to_string(c);
    insert_sql += c ? ", ?" : "?";
  }
  bool ok = sqlite3_exec(db, (create + ")").c_str(), nullptr, nullptr, nullptr) == SQLITE_OK &&
            sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_stmt* insert = nullptr;
  ok = ok && sqlite3_prepare_v2(db, (insert_sql + ")").c_str(), -1, &insert, nullptr) == SQLITE_OK;
  std::size_t text_budget = kMaxTotalText;
  for (int row = 0; ok && row < kMaxRows && !in.Done(); ++row) {
    for (int c = 0; c < columns; ++c) Bind(insert, c + 1, in, text_budget);
    ok = sqlite3_step(insert) == SQLITE_DONE && sqlite3_reset(insert) == SQLITE_OK;
  }
  sqlite3_finalize(insert);
  ok = ok && sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
  sqlite3_close(db);
  return ok;
}

QTemporaryDir& Scratch() {
  static int argc = 1;
  static char name[] = "report_rows_fuzz";
  static char* argv[] = {name, nullptr};
  // Pages are measured with fonts, which the offscreen platform has.
  if (QCoreApplication::instance() == nullptr) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    static QGuiApplication app(argc, argv);
  }
  static QTemporaryDir dir;
  return dir;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QTemporaryDir& scratch = Scratch();
  if (!scratch.isValid()) return 0;
  Bytes in(data, size);

  re::ReportDefinition def;
  def.source = "fuzz.cvr";
  def.name = in.Text(in.Byte() % 40);
  const int columns = 1 + in.Byte() % 8;
  for (int c = 0; c < columns; ++c) {
    re::ReportColumn column;
    column.title = in.Text(in.Byte() % 24);
    const std::uint8_t kind = in.Byte();
    column.field = kind % 11 == 0 ? "$LINE" : kind % 13 == 0 ? "$BLANK" : "c" + std::to_string(c);
    column.format = kFormats[kind % std::size(kFormats)];
    column.alignment = kAlignments[in.Byte() % std::size(kAlignments)];
    column.width = static_cast<int>(in.Byte()) << 8 | in.Byte();  // 0 to far beyond the paper
    def.columns.push_back(column);
  }
  const std::uint8_t flags = in.Byte();
  def.totals = flags & 1;
  def.averages = flags & 2;
  def.line_count = flags & 4;
  def.multi_line = flags & 8;
  def.grouped = flags & 16;
  def.page_size = static_cast<re::PageSize>((flags >> 5) & 3);
  def.orientation = static_cast<re::PageOrientation>((flags >> 7) & 1);
  def.statement = def.grouped ? R"("SELECT * FROM T WHERE quote(c0) = '" + FXA([c0]) + "'")"
                              : R"("SELECT * FROM T")";
  if (def.grouped) {
    def.group_report_field = "c0";
    def.group_title = in.Text(in.Byte() % 16);
    def.group_format = kFormats[in.Byte() % std::size(kFormats)];
    def.group_statement = R"("SELECT DISTINCT quote(c0) FROM T ORDER BY 1")";
  }

  static int run = 0;
  const std::string base =
      scratch.filePath(QStringLiteral("run%1-%2").arg(getpid()).arg(++run)).toStdString();
  if (!Store(base + ".db", columns, in)) {
    std::remove((base + ".db").c_str());
    return 0;
  }
  try {
    re::GuardedConnection db(base + ".db", re::QueryLimits{20'000, 10'000});
    const re::ReportData report = re::RunReport(def, db, {});
    const re::ReportLayout layout = re::Paginate(def, report);
    re::WritePdf(layout, QString::fromStdString(base + ".pdf"));
    std::ostringstream csv;
    re::WriteCsv(def, report, csv);
    std::ostringstream display;
    re::WriteCsv(def, report, display, re::CsvForm::kDisplay);
    re::WriteXlsxFile(def, report, base + ".xlsx");
  } catch (const cvve::Error&) {
    // Refused or malformed input is reported, by design.
  }
  std::remove((base + ".db").c_str());
  std::remove((base + ".pdf").c_str());
  std::remove((base + ".xlsx").c_str());
  return 0;
}
