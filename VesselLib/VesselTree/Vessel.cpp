#include "Vessel.h"

#include "ArVesselTree.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <istream>
#include <ostream>
#include <string>

double
Vessel::centreLineLength() const
{
  double length = 0.0;
  for (std::size_t i = 1; i < m_points.size(); ++i)
  {
    const double dx = double(m_points[i].x) - m_points[i - 1].x;
    const double dy = double(m_points[i].y) - m_points[i - 1].y;
    const double dz = double(m_points[i].z) - m_points[i - 1].z;
    length += std::sqrt(dx * dx + dy * dy + dz * dz);
  }
  return length;
}

ArVesselTree
cloneVesselTree(const ArVesselTree & tree)
{
  const LinkedVesselTree * linked = asLinkedVesselTree(tree);
  if (linked == nullptr)
  {
    return ArVesselTree();
  }
  auto copy = linked->copy(
    [](const ar<Vessel> & vessel) { return vessel.isNull() ? ar<Vessel>() : ar<Vessel>(new Vessel(*vessel)); });
  return ArVesselTree(copy.release());
}

ArVesselTree
joinVesselTrees(const std::vector<ArVesselTree> & trees)
{
  auto * joined = new LinkedVesselTree();
  ArVesselTree handle(joined);
  ar<Vessel> root(new Vessel());
  root->getProperties().setBloodVesselType(UndefinedBloodVesselType);
  joined->setRoot(root);
  VesselNode * top = joined->getRootNode();
  for (const ArVesselTree & tree : trees)
  {
    const LinkedVesselTree * linked = asLinkedVesselTree(tree);
    if (linked == nullptr || !linked->hasRoot())
    {
      continue;
    }
    // Copy the tree, then move its root node under the new root.
    auto copy = linked->copy(
      [](const ar<Vessel> & vessel) { return vessel.isNull() ? ar<Vessel>() : ar<Vessel>(new Vessel(*vessel)); });
    VesselNode * node = copy->releaseRootNode();
    node->setParent(top);
    top->addChild(node);
  }
  std::int32_t id = 1;
  std::unique_ptr<TreeIterator<ar<Vessel>>> it(joined->newPreorderIterator());
  while (it->hasNext())
  {
    ar<Vessel> vessel = it->next();
    if (!vessel.isNull())
    {
      vessel->setVesselId(id++);
    }
  }
  return handle;
}

// ---------------------------------------------------------------------------------------------------------------
// Text form of one vessel record. Formatting and parsing work on the stream buffer directly: the record is the
// bulk of every .ves file, and the locale machinery of the formatted stream operators costs several times more
// than the conversions themselves. The results are those of the classic locale with default float formatting
// (six significant digits, shortest of fixed and exponent form).

namespace
{
class RecordWriter
{
public:
  explicit RecordWriter(std::ostream & os)
    : m_os(os)
    , m_precision(static_cast<int>(os.precision()))
    , m_defaultFloatFormat((os.flags() & std::ios_base::floatfield) == std::ios_base::fmtflags(0))
  {
    m_buffer.reserve(256);
  }

  void
  text(const char * s, std::size_t n)
  {
    m_buffer.append(s, n);
  }
  template <std::size_t N>
  void
  text(const char (&s)[N])
  {
    m_buffer.append(s, N - 1);
  }
  void
  flag(bool value)
  {
    m_buffer.push_back(value ? 't' : 'f');
  }
  template <class Integer>
  void
  integer(Integer value)
  {
    char digits[24];
    auto result = std::to_chars(digits, digits + sizeof(digits), value);
    m_buffer.append(digits, result.ptr);
  }
  void
  real(float value)
  {
    if (!m_defaultFloatFormat)
    {
      flush();
      m_os << value;
      return;
    }
    char digits[64];
    auto result = std::to_chars(
      digits, digits + sizeof(digits), value, std::chars_format::general, m_precision > 0 ? m_precision : 6);
    m_buffer.append(digits, result.ptr);
  }
  void
  flush()
  {
    if (!m_buffer.empty())
    {
      m_os.write(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
      m_buffer.clear();
    }
  }

private:
  std::ostream & m_os;
  std::string m_buffer;
  int m_precision;
  bool m_defaultFloatFormat;
};

/** Token reader with the semantics of the formatted extractors: leading white space is skipped, a failed read sets
 *  failbit and leaves the target unchanged, reading at the end sets eofbit. */
class RecordReader
{
public:
  explicit RecordReader(std::istream & is)
    : m_is(is)
    , m_buffer(is.rdbuf())
  {}

  bool
  good() const
  {
    return m_is.good();
  }

  /** One non-blank character. */
  bool
  character(char & c)
  {
    if (!start())
    {
      return false;
    }
    c = std::char_traits<char>::to_char_type(m_buffer->sbumpc());
    return true;
  }

  bool
  integer(std::int32_t & value)
  {
    if (!start())
    {
      return false;
    }
    collect(false);
    std::int32_t parsed = 0;
    if (!convert(parsed))
    {
      return false;
    }
    value = parsed;
    return true;
  }

  bool
  unsignedInteger(std::uint32_t & value)
  {
    if (!start())
    {
      return false;
    }
    collect(false);
    if (!m_token.empty() && m_token[0] == '-')
    {
      return fail();
    }
    std::uint32_t parsed = 0;
    if (!convert(parsed))
    {
      return false;
    }
    value = parsed;
    return true;
  }

  bool
  real(float & value)
  {
    if (!start())
    {
      return false;
    }
    collect(true);
    const char * first = m_token.data();
    const char * last = first + m_token.size();
    if (first != last && *first == '+')
    {
      ++first;
    }
    float parsed = 0.0f;
    auto result = std::from_chars(first, last, parsed, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range)
    {
      // Values below the float range become zero or subnormal, as with the stream extractor; too large ones fail.
      double wide = 0.0;
      auto wideResult = std::from_chars(first, last, wide, std::chars_format::general);
      if (wideResult.ec != std::errc() || wideResult.ptr != last || !(std::fabs(wide) < double(FLT_MIN)))
      {
        return fail();
      }
      value = static_cast<float>(wide);
      return true;
    }
    if (result.ec != std::errc() || result.ptr != last || first == last)
    {
      return fail();
    }
    value = parsed;
    return true;
  }

private:
  using Traits = std::char_traits<char>;

  static bool
  isSpace(int c)
  {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
  }

  bool
  fail()
  {
    m_is.setstate(std::ios_base::failbit);
    return false;
  }

  /** Skips white space; false (with failbit, and eofbit at the end) when no character follows. */
  bool
  start()
  {
    if (!m_is.good() || m_buffer == nullptr)
    {
      m_is.setstate(std::ios_base::failbit);
      return false;
    }
    int c = m_buffer->sgetc();
    while (c != Traits::eof() && isSpace(c))
    {
      c = m_buffer->snextc();
    }
    if (c == Traits::eof())
    {
      m_is.setstate(std::ios_base::eofbit | std::ios_base::failbit);
      return false;
    }
    return true;
  }

  /** Gathers the characters that can continue a number, as the stream extractor does: a sign, digits and, for
   *  floating point, one decimal point and an exponent with its own sign. */
  void
  collect(bool floating)
  {
    m_token.clear();
    int c = m_buffer->sgetc();
    if (c == '+' || c == '-')
    {
      m_token.push_back(Traits::to_char_type(c));
      c = m_buffer->snextc();
    }
    bool point = false;
    bool exponent = false;
    while (c != Traits::eof() && m_token.size() < 128)
    {
      const char ch = Traits::to_char_type(c);
      if (ch >= '0' && ch <= '9')
      {
        m_token.push_back(ch);
      }
      else if (floating && ch == '.' && !point && !exponent)
      {
        point = true;
        m_token.push_back(ch);
      }
      else if (floating && (ch == 'e' || ch == 'E') && !exponent)
      {
        exponent = true;
        m_token.push_back(ch);
        c = m_buffer->snextc();
        if (c == '+' || c == '-')
        {
          m_token.push_back(Traits::to_char_type(c));
        }
        else
        {
          continue;
        }
      }
      else
      {
        break;
      }
      c = m_buffer->snextc();
    }
    if (c == Traits::eof())
    {
      m_is.setstate(std::ios_base::eofbit);
    }
  }

  template <class Integer>
  bool
  convert(Integer & value)
  {
    const char * first = m_token.data();
    const char * last = first + m_token.size();
    if (first != last && *first == '+')
    {
      ++first;
    }
    auto result = std::from_chars(first, last, value);
    if (result.ec != std::errc() || result.ptr != last || first == last)
    {
      return fail();
    }
    return true;
  }

  std::istream & m_is;
  std::streambuf * m_buffer;
  std::string m_token;
};
} // namespace

std::ostream &
operator<<(std::ostream & os, const ar<Vessel> & vessel)
{
  static const Vessel defaultVessel;
  const Vessel & v = vessel.isNull() ? defaultVessel : *vessel;
  const VesselProperties & p = v.getProperties();

  RecordWriter out(os);
  out.text(" { ");
  out.flag(p.isVisible());
  out.text(" ");
  out.flag(p.isActive());
  out.text(" ");
  out.integer(p.getSegmentType());
  out.text(" ");
  out.integer(p.getBloodVesselType());
  out.text(" ");
  out.integer(p.getResectionStatus());
  out.text(" ");
  out.text("   ");
  out.integer(v.getVesselId());
  out.text(" ");
  out.integer(v.getCleaningLabel());
  out.text(" ");
  out.integer(static_cast<std::uint32_t>(v.numberOfPoints()));
  out.text(" ");
  for (const VesselPoint & point : v.getPoints())
  {
    out.text(" [ ");
    out.real(point.x);
    out.text(" ");
    out.real(point.y);
    out.text(" ");
    out.real(point.z);
    out.text(" ");
    out.real(point.diameter);
    out.text(" ] ");
  }
  out.text(" } ");
  out.flush();
  return os;
}

std::istream &
operator>>(std::istream & is, ar<Vessel> & vessel)
{
  auto * v = new Vessel();
  vessel = v;
  VesselProperties & p = v->getProperties();
  RecordReader in(is);

  char c = 0;
  in.character(c); // "{"
  if (in.character(c))
  {
    p.setVisible(c == 't');
  }
  if (in.character(c))
  {
    p.setActive(c == 't');
  }
  std::int32_t value = 0;
  if (in.integer(value))
  {
    p.setSegmentType(value);
  }
  if (in.integer(value))
  {
    p.setBloodVesselType(value);
  }
  if (in.integer(value))
  {
    p.setResectionStatus(value < 1 ? 1 : value);
  }
  if (in.integer(value))
  {
    v->setVesselId(value);
  }
  if (in.integer(value))
  {
    v->setCleaningLabel(value);
  }
  std::uint32_t count = 0;
  in.unsignedInteger(count);
  // The count comes from the file: points are appended as they are read, never reserved from the count.
  for (std::uint32_t i = 0; i < count && in.good(); ++i)
  {
    VesselPoint point;
    in.character(c); // "["
    in.real(point.x);
    in.real(point.y);
    in.real(point.z);
    in.real(point.diameter);
    in.character(c); // "]"
    if (!in.good() && is.fail())
    {
      break;
    }
    v->appendPoint(point);
  }
  in.character(c); // "}"
  v->clearPristine();
  return is;
}
