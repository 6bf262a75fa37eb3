#include <benchmark/benchmark.h>

#include <cstdio>

int main(int argc, char **argv) {
#ifndef NDEBUG
  std::fputs("WARNING: a debug build; the times say nothing about the release\n", stderr);
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  std::fputs("WARNING: a build with sanitizers; the times say nothing about the release\n", stderr);
#endif
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
