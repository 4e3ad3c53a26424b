// Throughput of the .ves text format on a generated tree of 10,000 vessels with 50 points each, measured side by
// side with a reader and a writer built on the plain formatted stream operators (what a straightforward
// implementation of the format does), so that the ratio shows what the direct buffer access buys.

#include "BenchmarkSummary.h"

#include "ArVesselTree.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <deque>
#include <locale>
#include <random>
#include <sstream>

namespace
{
constexpr int vesselCount = 10000;
constexpr int pointsPerVessel = 50;

ArVesselTree
makeTree()
{
  std::mt19937 random(20261121);
  std::uniform_real_distribution<float> coordinate(-250.0f, 250.0f);
  std::uniform_real_distribution<float> diameter(0.5f, 15.0f);
  std::uniform_int_distribution<int> segment(1, 11);
  auto * tree = new LinkedVesselTree();
  ArVesselTree handle(tree);
  std::deque<VesselNode *> open;
  int id = 0;
  auto makeVessel = [&] {
    ar<Vessel> vessel(new Vessel());
    vessel->setVesselId(++id);
    vessel->getProperties().setSegmentType(segment(random));
    for (int p = 0; p < pointsPerVessel; ++p)
    {
      vessel->appendPoint({ coordinate(random), coordinate(random), coordinate(random), diameter(random) });
    }
    return vessel;
  };
  tree->setRoot(makeVessel());
  open.push_back(tree->getRootNode());
  while (id < vesselCount)
  {
    VesselNode * parent = open.front();
    open.pop_front();
    for (int c = 0; c < 2 && id < vesselCount; ++c)
    {
      auto * child = new VesselNode(parent, makeVessel());
      parent->addChild(child);
      open.push_back(child);
    }
  }
  return handle;
}

const ArVesselTree &
sampleTree()
{
  static const ArVesselTree tree = makeTree();
  return tree;
}

const std::string &
sampleText()
{
  static const std::string text = [] {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    sampleTree()->write(os);
    return os.str();
  }();
  return text;
}

// The straightforward record reader: formatted extraction of every token.
void
naiveReadRecord(std::istream & is, Vessel & vessel)
{
  char c;
  int segment, type, status, id, label;
  unsigned count;
  is >> c >> c;
  vessel.getProperties().setVisible(c == 't');
  is >> c;
  vessel.getProperties().setActive(c == 't');
  is >> segment >> type >> status >> id >> label >> count;
  vessel.getProperties().setSegmentType(segment);
  vessel.getProperties().setBloodVesselType(type);
  vessel.getProperties().setResectionStatus(status < 1 ? 1 : status);
  vessel.setVesselId(id);
  vessel.setCleaningLabel(label);
  for (unsigned i = 0; i < count && is; ++i)
  {
    VesselPoint p;
    is >> c >> p.x >> p.y >> p.z >> p.diameter >> c;
    vessel.appendPoint(p);
  }
  is >> c;
}

// The straightforward record writer: formatted insertion of every token.
void
naiveWriteRecord(std::ostream & os, const Vessel & vessel)
{
  const VesselProperties & p = vessel.getProperties();
  os << " { " << (p.isVisible() ? 't' : 'f') << " " << (p.isActive() ? 't' : 'f') << " " << p.getSegmentType() << " "
     << p.getBloodVesselType() << " " << p.getResectionStatus() << " "
     << "   " << vessel.getVesselId() << " " << vessel.getCleaningLabel() << " " << vessel.numberOfPoints() << " ";
  for (const VesselPoint & point : vessel.getPoints())
  {
    os << " [ " << point.x << " " << point.y << " " << point.z << " " << point.diameter << " ] ";
  }
  os << " } ";
}

void
setThroughput(benchmark::State & state, std::size_t bytes)
{
  state.counters["MB/s"] = benchmark::Counter(
    static_cast<double>(bytes) * 1e-6 * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
  state.counters["bytes"] = static_cast<double>(bytes);
}

void
BM_VesWrite(benchmark::State & state)
{
  std::size_t bytes = 0;
  for (auto _ : state)
  {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    sampleTree()->write(os);
    bytes = os.str().size();
    benchmark::DoNotOptimize(bytes);
  }
  if (bytes != sampleText().size())
  {
    state.SkipWithError("written text differs in size from the reference text");
  }
  setThroughput(state, bytes);
}

void
BM_VesRead(benchmark::State & state)
{
  const std::string & text = sampleText();
  for (auto _ : state)
  {
    std::istringstream is(text);
    is.imbue(std::locale::classic());
    LinkedVesselTree tree;
    tree.read(is);
    if (is.fail() || tree.numberOfNodes() != vesselCount)
    {
      state.SkipWithError("the tree did not read back whole");
      break;
    }
  }
  setThroughput(state, text.size());
}

void
BM_VesWritePlainStreamOperators(benchmark::State & state)
{
  std::vector<ar<Vessel>> vessels;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(sampleTree()->newPreorderIterator());
  while (it->hasNext())
  {
    vessels.push_back(it->next());
  }
  std::size_t bytes = 0;
  for (auto _ : state)
  {
    std::ostringstream os;
    os.imbue(std::locale::classic());
    for (const ar<Vessel> & vessel : vessels)
    {
      naiveWriteRecord(os, *vessel);
    }
    bytes = os.str().size();
    benchmark::DoNotOptimize(bytes);
  }
  setThroughput(state, bytes);
}

void
BM_VesReadPlainStreamOperators(benchmark::State & state)
{
  // The records alone, in the same layout as the file: the tree marks are a small share of the text.
  std::ostringstream records;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(sampleTree()->newPreorderIterator());
  while (it->hasNext())
  {
    records << it->next();
  }
  const std::string text = records.str();
  for (auto _ : state)
  {
    std::istringstream is(text);
    is.imbue(std::locale::classic());
    int read = 0;
    while (is >> std::ws && !is.eof())
    {
      Vessel vessel;
      naiveReadRecord(is, vessel);
      if (is.fail())
      {
        break;
      }
      ++read;
    }
    if (read != vesselCount)
    {
      state.SkipWithError("the plain reader did not read every record");
      break;
    }
  }
  setThroughput(state, text.size());
}

BENCHMARK(BM_VesWrite)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_VesWritePlainStreamOperators)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_VesRead)->Unit(benchmark::kMillisecond)->MinTime(1.0);
BENCHMARK(BM_VesReadPlainStreamOperators)->Unit(benchmark::kMillisecond)->MinTime(1.0);
} // namespace

int
main(int argc, char ** argv)
{
  benchmark::Initialize(&argc, argv);
  BenchmarkSummary summary;
  benchmark::RunSpecifiedBenchmarks(&summary);
  const double write = summary.value("BM_VesWrite", "MB/s");
  const double read = summary.value("BM_VesRead", "MB/s");
  const double plainWrite = summary.value("BM_VesWritePlainStreamOperators", "MB/s");
  const double plainRead = summary.value("BM_VesReadPlainStreamOperators", "MB/s");
  std::printf("\n.ves text of %d vessels x %d points (%.1f MB):\n",
              vesselCount,
              pointsPerVessel,
              static_cast<double>(sampleText().size()) * 1e-6);
  std::printf("  write: %7.1f MB/s (goal >= 60: %s), %.2fx the plain stream operators (%.1f MB/s)\n",
              write,
              write >= 60.0 ? "met" : "MISSED",
              plainWrite > 0 ? write / plainWrite : 0.0,
              plainWrite);
  std::printf("  read:  %7.1f MB/s (goal >= 40: %s), %.2fx the plain stream operators (%.1f MB/s)\n",
              read,
              read >= 40.0 ? "met" : "MISSED",
              plainRead > 0 ? read / plainRead : 0.0,
              plainRead);
  benchmark::Shutdown();
  return 0;
}
