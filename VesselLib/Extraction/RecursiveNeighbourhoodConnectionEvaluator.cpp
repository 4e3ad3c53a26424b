#include "RecursiveNeighbourhoodConnectionEvaluator.h"

#include "NeighbourhoodOrder.h"

#include <cstdlib>

namespace
{
struct AdjacencyTable
{
  int count[26];
  int positions[26][16];
  AdjacencyTable()
  {
    for (int i = 0; i < 26; ++i)
    {
      count[i] = 0;
      for (int j = 0; j < 26; ++j)
      {
        const int * a = NeighbourhoodOrder::offsets26[i];
        const int * b = NeighbourhoodOrder::offsets26[j];
        if (j != i && std::abs(a[0] - b[0]) <= 1 && std::abs(a[1] - b[1]) <= 1 && std::abs(a[2] - b[2]) <= 1)
        {
          positions[i][count[i]++] = j;
        }
      }
    }
  }
};

const AdjacencyTable &
adjacency()
{
  static const AdjacencyTable table;
  return table;
}
} // namespace

int
RecursiveNeighbourhoodConnectionEvaluator::adjacentCount(int position)
{
  return adjacency().count[position];
}

int
RecursiveNeighbourhoodConnectionEvaluator::adjacentPosition(int position, int i)
{
  return adjacency().positions[position][i];
}

void
RecursiveNeighbourhoodConnectionEvaluator::visit(int position, const bool * marked, bool * reached, int & reachedCount)
{
  reached[position] = true;
  ++reachedCount;
  const AdjacencyTable & table = adjacency();
  for (int i = 0; i < table.count[position]; ++i)
  {
    const int next = table.positions[position][i];
    if (marked[next] && !reached[next])
    {
      visit(next, marked, reached, reachedCount);
    }
  }
}

bool
RecursiveNeighbourhoodConnectionEvaluator::isConnected(const unsigned char * neighbourhood) const
{
  bool marked[26];
  bool reached[26] = {};
  int markedCount = 0;
  int start = -1;
  for (int i = 0; i < NeighbourhoodOrder::size26; ++i)
  {
    marked[i] = neighbourhood[i] != 0;
    if (marked[i])
    {
      ++markedCount;
      start = i;
    }
  }
  if (markedCount == 0)
  {
    return false;
  }
  int reachedCount = 0;
  visit(start, marked, reached, reachedCount);
  return reachedCount == markedCount;
}
