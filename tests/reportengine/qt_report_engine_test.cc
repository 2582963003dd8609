// The core's report engine port on QtSql, the viewer window, and the
// `viewedit report` / `viewedit demo-db` commands.
#include "reportengine/qt_report_engine.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>

#include "base/error.h"
#include "report_test_support.h"
#include "reportengine/page_renderer.h"
#include "reportengine/report_viewer.h"

namespace cvve::reportengine {
namespace {

using testing::CvrShape;
using testing::CvrXml;
using testing::HaveTool;
using testing::RunCommand;
using testing::SmallDatabase;
using testing::SqlValue;
using testing::TempFolder;

CvrShape ReceiptsForPeriod() {
  CvrShape shape;
  shape.name = "Receipts For Period";
  shape.statement =
      R"("CQ:SELECT ReceiptNum, TransDate, Amount FROM ACCT_HISTORY WHERE TransDate BETWEEN '" + )"
      R"($START_DATE + "' AND '" + $END_DATE + "' ORDER BY TransDate, ReceiptNum")";
  shape.columns = {{"Receipt", "ACCT_HISTORY.ReceiptNum", "String"},
                  {"Date", "ACCT_HISTORY.TransDate", "Date"},
                  {"Amount", "ACCT_HISTORY.Amount", "Currency", "Right"}};
  shape.variables = {{"$START_DATE", "Date"}, {"$END_DATE", "Date"}};
  shape.totals = true;
  return shape;
}

TEST(QtReportEngineTest, VariablesRunAndShowAsThePreviewDoes) {
  TempFolder folder;
  HeadlessReportEngine engine({SmallDatabase(), ""});
  std::unique_ptr<Report> report = engine.CreateReport();
  EXPECT_THROW(report->Run(), Error);  // nothing loaded
  report->Load(folder.Write("r.cvr", CvrXml(ReceiptsForPeriod())));
  // Variables by 1-based position.
  ASSERT_EQ(report->VariableCount(), 2);
  EXPECT_EQ(report->VariableName(1), "$START_DATE");
  EXPECT_EQ(report->VariableName(2), "$END_DATE");
  EXPECT_EQ(report->VariableValue(1), "");
  for (int position : {0, 3, -1}) {
    EXPECT_THROW(report->VariableName(position), Error) << position;
    EXPECT_THROW(report->SetVariableValue(position, "x"), Error) << position;
  }
  // No dates: no rows, a warning for each.
  EXPECT_EQ(report->Run()->Count(), 0);
  EXPECT_EQ(dynamic_cast<SqlReport*>(report.get())->Warnings().size(), 2u);

  // The preview sets each variable whose name matches "$" + the slot's name.
  for (int i = 1; i <= report->VariableCount(); ++i) {
    if (report->VariableName(i) == "$START_DATE") report->SetVariableValue(i, "03/01/2026");
    if (report->VariableName(i) == "$END_DATE") report->SetVariableValue(i, "03/16/2026");
  }
  EXPECT_EQ(report->VariableValue(2), "03/16/2026");
  std::unique_ptr<ReportResult> result = report->Run();
  const auto* laid_out = dynamic_cast<const LaidOutResult*>(result.get());
  ASSERT_NE(laid_out, nullptr);
  EXPECT_EQ(std::to_string(laid_out->Data().RowCount()),
            SqlValue(SmallDatabase(),
                     "SELECT COUNT(*) FROM ACCT_HISTORY WHERE TransDate BETWEEN "
                     "'2026-03-01' AND '2026-03-16'"));
  const int pages = result->Count();
  EXPECT_GT(pages, 0);
  std::unique_ptr<ReportViewer> viewer = engine.CreateViewer();
  viewer->SetResult(std::move(result));
  viewer->Show();
  ASSERT_EQ(engine.ShownReports().size(), 1u);
  const auto& shown = engine.ShownReports()[0];
  EXPECT_EQ(shown.name, "Receipts For Period");
  EXPECT_EQ(shown.pages, pages);
  EXPECT_EQ(shown.variables,
            (std::vector<std::string>{"$START_DATE=03/01/2026", "$END_DATE=03/16/2026"}));
}

TEST(ReportViewerTest, NavigatesZoomsAndSaves) {
  TempFolder folder;
  HeadlessReportEngine engine({SmallDatabase(), ""});
  std::unique_ptr<Report> report = engine.CreateReport();
  CvrShape shape = ReceiptsForPeriod();
  shape.statement = R"("CQ:SELECT ReceiptNum, TransDate, Amount FROM ACCT_HISTORY ORDER BY HistID")";
  shape.variables.clear();
  report->Load(folder.Write("r.cvr", CvrXml(shape)));
  std::unique_ptr<ReportResult> result = report->Run();
  const auto layout = dynamic_cast<const LaidOutResult&>(*result).Layout();
  ASSERT_GT(layout->pages.size(), 3u);

  {
    // A new window opens with the page fitted to its width.
    ReportViewerWindow fresh(layout);
    fresh.show();
    QApplication::processEvents();
    const double shown = fresh.ShownImage().width() / fresh.devicePixelRatioF();
    EXPECT_GT(shown, fresh.width() * 0.8);
    EXPECT_LE(shown, fresh.width());
  }

  ReportViewerWindow window(layout);
  const int last = static_cast<int>(layout->pages.size()) - 1;
  EXPECT_EQ(window.PageCount(), last + 1);
  window.NextPage();
  window.NextPage();
  window.PreviousPage();
  EXPECT_EQ(window.CurrentPage(), 1);
  window.LastPage();
  window.NextPage();  // stays on the last page
  EXPECT_EQ(window.CurrentPage(), last);
  window.ShowPage(-5);
  EXPECT_EQ(window.CurrentPage(), 0);

  window.SetZoom(1.0);
  const int width = window.ShownImage().width();
  EXPECT_NEAR(width, layout->width / 1440.0 * 96 * window.devicePixelRatioF(), 2);
  window.ZoomIn();
  EXPECT_GT(window.ShownImage().width(), width);
  window.ZoomOut();
  window.ZoomOut();
  EXPECT_LT(window.ShownImage().width(), width);
  window.SetZoom(100);
  EXPECT_DOUBLE_EQ(window.Zoom(), 8.0);
  window.resize(800, 600);
  window.show();
  QApplication::processEvents();
  window.FitPage();
  const double fit_page = window.Zoom();
  window.FitWidth();
  EXPECT_GT(window.Zoom(), fit_page);  // a portrait page is taller than it is wide

  const std::string pdf = folder.Path("saved.pdf");
  EXPECT_TRUE(window.SaveAsPdf(QString::fromStdString(pdf)));
  EXPECT_GT(QFile(QString::fromStdString(pdf)).size(), 1000);

  // Save as by the file's type: a spreadsheet only once the window has the
  // report's rows; before that every name is written as PDF.
  const auto& laid_out = dynamic_cast<const LaidOutResult&>(*result);
  const auto starts = [](const std::string& path) {
    QFile file(QString::fromStdString(path));
    return file.open(QIODevice::ReadOnly) ? file.read(4) : QByteArray();
  };
  const std::string early = folder.Path("early.xlsx");
  EXPECT_TRUE(window.SaveAs(QString::fromStdString(early)));
  EXPECT_EQ(starts(early), QByteArray("%PDF"));
  window.SetRows(&laid_out.Definition(), &laid_out.Data());
  const std::string book = folder.Path("saved.XLSX");
  const std::string csv = folder.Path("saved.csv");
  EXPECT_TRUE(window.SaveAs(QString::fromStdString(book)));
  EXPECT_TRUE(window.SaveAs(QString::fromStdString(csv)));
  EXPECT_EQ(starts(book), QByteArray("PK\x03\x04"));  // a zip
  EXPECT_EQ(starts(csv), QByteArray("\xEF\xBB\xBFS"));  // the mark, then "Summary"
}

// The command line, run as a user would.
class ViewEditCommandTest : public ::testing::Test {
 protected:
  int Run(const std::string& arguments, std::string* output = nullptr) {
    return RunCommand("QT_QPA_PLATFORM=offscreen XDG_CACHE_HOME='" + folder_.Path("cache") +
                          "' '" VIEWEDIT_PATH "' " + arguments,
                      output);
  }
  TempFolder folder_;
};

TEST_F(ViewEditCommandTest, ReportOutputsAndExitCodes) {
  const std::string cvr = folder_.Write("Receipts.cvr", CvrXml(ReceiptsForPeriod()));
  const std::string db = " --database '" + SmallDatabase() + "'";
  const std::string csv = folder_.Path("out.csv");
  const std::string pdf = folder_.Path("out.pdf");
  const std::string xlsx = folder_.Path("out.xlsx");
  const std::string rows = SqlValue(SmallDatabase(),
                                    "SELECT COUNT(*) FROM ACCT_HISTORY WHERE TransDate BETWEEN "
                                    "'2026-03-01' AND '2026-03-16'");
  const struct {
    std::string arguments;
    int code;
    std::string message;
  } cases[] = {
      {"report '" + cvr + "'" + db + " --set START_DATE=03/01/2026 --set '$END_DATE=2026-03-16' " +
           "--csv '" + csv + "'",
       0, "viewedit report: " + rows + " rows -> " + csv},
      // A missing variable: a warning, still a report.
      {"report '" + cvr + "' --database 'sqlite://" + SmallDatabase() +
           "' --set START_DATE=2026-03-01 --pdf '" + pdf + "'",
       0, "warning: the variable $END_DATE has no value; it is taken as empty"},
      // --progress writes the stages on stderr even when it is no terminal.
      {"report '" + cvr + "'" + db + " --progress --pdf '" + pdf + "'", 0,
       "\rRunning the statement: 0"},
      {"report '" + cvr + "'" + db + " --set NOEQUALS --pdf x.pdf", 2,
       "viewedit report: --set 'NOEQUALS' is not NAME=VALUE"},
      {"report '" + cvr + "'" + db + " --set START_DATE=03/01/2026 --xlsx '" + xlsx + "'", 0,
       " rows -> " + xlsx},
      {"report '" + cvr + "'" + db + " --pdf a.pdf --csv b.csv", 2,
       "viewedit report: give only one of --pdf, --csv and --xlsx"},
      {"report '" + cvr + "'" + db + " --csv b.csv --xlsx b.xlsx", 2,
       "viewedit report: give only one of --pdf, --csv and --xlsx"},
      {"report '" + cvr + "'" + db + " --csv-display --pdf a.pdf", 2,
       "viewedit report: --csv-display needs --csv"},
      {"report --pdf a.pdf", 2,
       "viewedit report: --pdf, --csv, --xlsx and --set need a report FILE"},
      {"report --xlsx a.xlsx", 2,
       "viewedit report: --pdf, --csv, --xlsx and --set need a report FILE"},
      {"report '" + folder_.Path("missing.cvr") + "'" + db + " --pdf x.pdf", 1,
       "missing.cvr: the report definition cannot be opened: there is no such file"},
      {"report '" + folder_.Write("broken.cvr", "<CustomReport>\n<Name>") + "'" + db +
           " --pdf x.pdf",
       1, "broken.cvr: line 2, column 6: "},
      {"report '" + cvr + "' --database /no/such.db --pdf x.pdf", 1,
       "viewedit report: the database file '/no/such.db' does not exist"},
      {"report '" + cvr + "'" + db + " --pdf /no/such/folder/x.pdf", 1, "cannot write"},
      {"report '" + cvr + "'" + db, 1, "there is no display to show the report on"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    std::string output;
    EXPECT_EQ(Run(c.arguments, &output), c.code) << output;
    EXPECT_NE(output.find(c.message), std::string::npos) << output;
  }
  QFile file(QString::fromStdString(csv));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  // A byte-order mark, the header, the rows and the totals row.
  const QByteArray written = file.readAll();
  EXPECT_TRUE(written.startsWith("\xEF\xBB\xBFSummary,Receipt,Date,Amount\r\n"));
  EXPECT_EQ(written.count('\n'), std::stoi(rows) + 2);
  EXPECT_TRUE(written.contains("\r\nTotal,,,"));
  EXPECT_GT(QFile(QString::fromStdString(xlsx)).size(), 1000);
  EXPECT_GT(QFile(QString::fromStdString(pdf)).size(), 1000);
}

}  // namespace
}  // namespace cvve::reportengine
