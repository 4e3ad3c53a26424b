#ifndef BenchmarkSummary_h
#define BenchmarkSummary_h

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/** Console reporter that also keeps every run's counters, so that a benchmark's main can print goal lines and
 *  ratios of runs measured side by side after the table. */
class BenchmarkSummary : public benchmark::ConsoleReporter
{
public:
  void
  ReportRuns(const std::vector<Run> & runs) override
  {
    for (const Run & run : runs)
    {
      if (run.run_type != Run::RT_Iteration || run.error_occurred)
      {
        continue;
      }
      // Keyed by the plain name: options such as "/min_time:1.000" are cut off.
      const std::string name = run.benchmark_name();
      auto & counters = m_Counters[name.substr(0, name.find('/'))];
      for (const auto & [name, counter] : run.counters)
      {
        counters[name] = counter.value;
      }
      counters["real_time"] = run.GetAdjustedRealTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }

  /** Value of a counter of a named run; 0 when the run is missing (failed or filtered out). */
  double
  value(const std::string & benchmark, const std::string & counter) const
  {
    auto run = m_Counters.find(benchmark);
    if (run == m_Counters.end())
    {
      return 0.0;
    }
    auto it = run->second.find(counter);
    return it == run->second.end() ? 0.0 : it->second;
  }

  bool
  has(const std::string & benchmark) const
  {
    return m_Counters.count(benchmark) != 0;
  }

private:
  std::map<std::string, std::map<std::string, double>> m_Counters;
};

#endif
