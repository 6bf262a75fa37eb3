// Several threads compute from a file what one thread computes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "host/commands.h"

namespace {

std::string Output(const std::function<int(int64_t jobs)> &run, int64_t jobs) {
  testing::internal::CaptureStdout();
  const int status = run(jobs);
  return testing::internal::GetCapturedStdout() + std::to_string(status);
}

TEST(Jobs, GiveTheSameOutput) {
  const std::string path = testing::TempDir() + "/orli-jobs-" + std::to_string(getpid()) + ".csv";
  FILE *file = std::fopen(path.c_str(), "wb");
  std::fputs("a,d,t\n", file);
  for (int i = 0; i < 15000; ++i) {
    std::fprintf(file, "%d.%d,20%02d-01-%02d,\"n, %d\"\n", i, i % 7, i % 60, 1 + i % 28, i % 100);
  }
  std::fclose(file);
  EvalOptions eval;
  eval.rows.data.paths = {path, path};
  eval.rows.format = kOutputCsv;
  eval.formulas = {"x=a * 3 + y()", "y=DateYear(d + 1 MONTHS)", "z=StrUpper(t) || '!'"};
  ReportOptions report;
  report.rows = eval.rows;
  report.columns = {{kReportBy, "t=t"}, {kReportSum, "s=a"}, {kReportMedian, "m=a"}};
  const auto runEval = [&](int64_t jobs) {
    eval.rows.jobs = jobs;
    return RunEval(eval);
  };
  const auto runReport = [&](int64_t jobs) {
    report.rows.jobs = jobs;
    return RunReport(report);
  };
  const std::string rows = Output(runEval, 1);
  EXPECT_GT(rows.size(), 500000U);
  EXPECT_TRUE(Output(runEval, 3) == rows);
  EXPECT_EQ(Output(runReport, 3), Output(runReport, 1));
  unlink(path.c_str());
}

}  // namespace
