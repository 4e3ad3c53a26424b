// Trees from files are not to be trusted: they may be arbitrarily deep, truncated or made of garbage. These tests
// run in the sanitizer build too, where any leak, overflow or unbounded allocation fails them.

#include "HostileInputs.h"
#include "VesselTestTree.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <sstream>

using namespace vessel_test;

namespace
{
constexpr int deepChain = 1000000;

std::string
record(int id)
{
  return "{t f 1 2 1 " + std::to_string(id) + " -1 0}";
}

/** A chain of n vessels in the most compact layout the reader accepts. */
std::string
chainText(int n, bool closed)
{
  std::string text = "VALD-KRN 2000 Tree {";
  text.reserve(static_cast<std::size_t>(n) * 24);
  for (int i = 1; i < n; ++i)
  {
    text += record(i);
    text += '<';
  }
  if (closed)
  {
    text += record(n);
    text += '-';
    text.append(static_cast<std::size_t>(n - 1), '>');
    text += '}';
  }
  return text;
}

/** Counts the characters written, keeps none. */
class CountingBuffer : public std::streambuf
{
public:
  std::size_t count{ 0 };

protected:
  int_type
  overflow(int_type c) override
  {
    ++count;
    return c;
  }
  std::streamsize
  xsputn(const char *, std::streamsize n) override
  {
    count += static_cast<std::size_t>(n);
    return n;
  }
};

/** Runs f on a thread with a small stack, where any recursion over the depth of a deep tree overflows. */
template <class F>
void
onSmallStack(F f)
{
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 256 * 1024);
  pthread_t thread;
  auto trampoline = [](void * arg) -> void * {
    (*static_cast<F *>(arg))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, trampoline, &f), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}
} // namespace

TEST(DeepTree, AMillionVesselChainIsReadCopiedWalkedAndDestroyed)
{
  const std::size_t vessels = ar<Vessel>::registrySize();
  {
    std::istringstream is(chainText(deepChain, true));
    ArVesselTree tree(new LinkedVesselTree());
    tree->read(is);
    ASSERT_FALSE(is.fail());
    EXPECT_EQ(tree->numberOfNodes(), deepChain);
    EXPECT_EQ(ar<Vessel>::registrySize(), vessels + deepChain);

    ArVesselTree copy = cloneVesselTree(tree);
    EXPECT_EQ(copy->numberOfNodes(), deepChain);
    std::unique_ptr<TreeIterator<ar<Vessel>>> post(copy->newPostorderIterator());
    ASSERT_TRUE(post->hasNext());
    EXPECT_EQ(post->next()->getVesselId(), deepChain);
    std::unique_ptr<TreeIterator<ar<Vessel>>> leaves(tree->newLeafIterator());
    EXPECT_EQ(idsOf(*leaves), std::vector<int>{ deepChain });
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
}

TEST(DeepTree, DeepChainsAreWrittenWithoutRecursion)
{
  // The format indents every level, so the text of a chain grows with the square of its depth; a depth of some
  // thousands on a 256 KiB stack is what shows that writing does not recurse.
  constexpr int depth = 3000;
  std::istringstream is(chainText(depth, true));
  LinkedVesselTree tree;
  tree.read(is);
  ASSERT_FALSE(is.fail());
  std::size_t written = 0;
  onSmallStack([&] {
    CountingBuffer counter;
    std::ostream os(&counter);
    tree.write(os);
    written = counter.count;
  });
  // Node at depth d = 2k - 1: 3d + record + 2, then "\n" + 3(d+1) + "<\n", and after its child "\n" + 3(d+1) + ">\n"
  // + 3d; the last node: 3d + record + 2.
  std::size_t expected = 19 + 2 + 3; // header, "{ ", "\n" before the root and "\n}\n" closing
  std::ostringstream one;
  for (int k = 1; k <= depth; ++k)
  {
    const std::size_t d = 2 * k - 1;
    std::ostringstream os;
    os << makeVessel(k);
    expected += 3 * d + os.str().size() + 1;
    if (k < depth)
    {
      expected += 1 + 3 * (d + 1) + 2 + 1 + 3 * (d + 1) + 2 + 3 * d;
    }
    else
    {
      expected += 1;
    }
  }
  expected += 1;
  EXPECT_EQ(written, expected);
  onSmallStack([&] { tree.clear(); });
  EXPECT_FALSE(tree.hasRoot());
}

TEST(HostileTreeText, AMillionOpenLevelsFailCleanly)
{
  const std::size_t vessels = ar<Vessel>::registrySize();
  {
    std::istringstream is(chainText(deepChain, false));
    LinkedVesselTree tree;
    tree.read(is);
    EXPECT_TRUE(is.fail());
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
}

TEST(HostileTreeText, GarbageFailsTheStream)
{
  const std::size_t vessels = ar<Vessel>::registrySize();
  for (const char * text : { "",
                             "hello",
                             "VALD-KRN 2000 Tree",
                             "VALD-KRN 2000 Tree {",
                             "\x01\x02\x03 \xff\xfe { {",
                             "a b c { { t f 1 2 1 1 -1 0 } < < < < <",
                             "a b c { { t f 1 2 1 1 -1 0 } < | | | >",
                             "a b c { { t f 1 2 1 1 -1 -7 } - }",
                             "a b c { { t f 1 2 1 1 -1 2 [ 1 2 3 4 ] } - }" })
  {
    std::istringstream is(text);
    LinkedVesselTree tree;
    tree.read(is);
    EXPECT_TRUE(is.fail()) << text;
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
}

TEST(HostileTreeText, AHugePointCountIsNotTrusted)
{
  const std::size_t vessels = ar<Vessel>::registrySize();
  {
    std::istringstream is("VALD-KRN 2000 Tree { { t f 1 2 1 1 -1 4294967295 [ 1 2 3 4 ] [ 5 6 7 8 ] [ 9 10 11 12 ] } "
                          "- }");
    LinkedVesselTree tree;
    tree.read(is);
    EXPECT_TRUE(is.fail());
    ASSERT_TRUE(tree.hasRoot());
    EXPECT_EQ(tree.getRoot()->numberOfPoints(), 3u);
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
}

TEST(HostileTreeText, EveryTruncationFails)
{
  auto tree = makeThreeLevelTree();
  tree->getRootNode()->getData()->appendPoint({ 1, 2, 3, 4 });
  std::ostringstream os;
  tree->write(os);
  const std::string text = os.str();
  const std::size_t closing = text.rfind('}');
  const std::size_t vessels = ar<Vessel>::registrySize();
  for (std::size_t cut = 0; cut < closing; ++cut)
  {
    std::istringstream is(text.substr(0, cut));
    LinkedVesselTree back;
    back.read(is);
    EXPECT_TRUE(is.fail()) << "cut at " << cut;
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
}

TEST(HostileTreeText, EveryListedHostileTreeFailsTheStreamAndKeepsNoVessel)
{
  const std::size_t vessels = ar<Vessel>::registrySize();
  for (const lumotest::HostileInput & input : lumotest::hostileVesselTrees())
  {
    std::istringstream is(input.content);
    LinkedVesselTree tree;
    onSmallStack([&] { tree.read(is); });
    EXPECT_TRUE(is.fail()) << input.name;
  }
  EXPECT_EQ(ar<Vessel>::registrySize(), vessels);
}
