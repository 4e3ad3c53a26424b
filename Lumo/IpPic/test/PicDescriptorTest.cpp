#include "lumoIpPicDescriptor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

namespace
{
using PicPointer = std::unique_ptr<lumoIpPicDescriptor, void (*)(lumoIpPicDescriptor *)>;

PicPointer
volume(lumoIpPicType type, std::uint32_t bpe, std::vector<std::uint32_t> sizes)
{
  return PicPointer(lumoIpPicNewVolume(type, bpe, static_cast<std::uint32_t>(sizes.size()), sizes.data()),
                    lumoIpPicFree);
}

template <class T>
PicPointer
volumeOf(lumoIpPicType type, const std::vector<T> & values)
{
  PicPointer pic = volume(type, 8 * sizeof(T), { static_cast<std::uint32_t>(values.size()) });
  std::memcpy(pic->data, values.data(), values.size() * sizeof(T));
  return pic;
}

template <class T>
std::vector<T>
elementsOf(const lumoIpPicDescriptor * pic)
{
  const T * data = static_cast<const T *>(pic->data);
  return std::vector<T>(data, data + lumoIpPicElements(pic));
}

lumoIpPicTag
textTag(const std::string & name, const std::string & value)
{
  lumoIpPicTag tag;
  tag.name = name;
  tag.type = lumoIpPicASCII;
  tag.bpe = 8;
  tag.value.assign(value.begin(), value.end());
  return tag;
}

const double notANumber = std::numeric_limits<double>::quiet_NaN();
const double inf = std::numeric_limits<double>::infinity();
} // namespace

TEST(PicDescriptorConvert, FloatToIntegerClampsToTheTargetRangeAndNaNBecomesZero)
{
  const PicPointer in = volumeOf<double>(lumoIpPicFloat, { -1.5, 300.7, notANumber, -inf, inf, 42.6, -40000.0 });
  const PicPointer u8(lumoIpPicConvert(in.get(), lumoIpPicUInt, 8), lumoIpPicFree);
  ASSERT_TRUE(u8);
  EXPECT_EQ(elementsOf<std::uint8_t>(u8.get()), (std::vector<std::uint8_t>{ 0, 255, 0, 0, 255, 42, 0 }));
  const PicPointer s16(lumoIpPicConvert(in.get(), lumoIpPicInt, 16), lumoIpPicFree);
  ASSERT_TRUE(s16);
  EXPECT_EQ(elementsOf<std::int16_t>(s16.get()), (std::vector<std::int16_t>{ -1, 300, 0, -32768, 32767, 42, -32768 }));

  const PicPointer big = volumeOf<double>(lumoIpPicFloat, { 1e30, -1e30 });
  const PicPointer s64(lumoIpPicConvert(big.get(), lumoIpPicInt, 64), lumoIpPicFree);
  ASSERT_TRUE(s64);
  EXPECT_EQ(
    elementsOf<std::int64_t>(s64.get()),
    (std::vector<std::int64_t>{ std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min() }));
  const PicPointer u64(lumoIpPicConvert(big.get(), lumoIpPicUInt, 64), lumoIpPicFree);
  ASSERT_TRUE(u64);
  EXPECT_EQ(elementsOf<std::uint64_t>(u64.get()),
            (std::vector<std::uint64_t>{ std::numeric_limits<std::uint64_t>::max(), 0 }));
}

TEST(PicDescriptorConvert, BoolTargetHoldsOneForEveryNonZeroValue)
{
  const PicPointer wide = volumeOf<std::uint32_t>(lumoIpPicUInt, { 0, 256, 3 });
  const PicPointer fromInt(lumoIpPicConvert(wide.get(), lumoIpPicBool, 8), lumoIpPicFree);
  ASSERT_TRUE(fromInt);
  EXPECT_EQ(elementsOf<std::uint8_t>(fromInt.get()), (std::vector<std::uint8_t>{ 0, 1, 1 }));
  const PicPointer real = volumeOf<float>(lumoIpPicFloat, { 0.0f, 0.25f, std::nanf(""), -2.0f });
  const PicPointer fromFloat(lumoIpPicConvert(real.get(), lumoIpPicBool, 8), lumoIpPicFree);
  ASSERT_TRUE(fromFloat);
  EXPECT_EQ(elementsOf<std::uint8_t>(fromFloat.get()), (std::vector<std::uint8_t>{ 0, 1, 0, 1 }));
}

TEST(PicDescriptorConvert, KeepsSizesAndTagsAndRefusesUnsupportedKinds)
{
  PicPointer in = volume(lumoIpPicInt, 16, { 2, 3 });
  static_cast<std::int16_t *>(in->data)[5] = -7;
  ASSERT_TRUE(lumoIpPicAddTag(in.get(), textTag("NOTE", "liver")));
  const PicPointer out(lumoIpPicConvert(in.get(), lumoIpPicFloat, 32), lumoIpPicFree);
  ASSERT_TRUE(out);
  EXPECT_EQ(out->dim, 2u);
  EXPECT_EQ(out->n[0], 2u);
  EXPECT_EQ(out->n[1], 3u);
  EXPECT_EQ(static_cast<const float *>(out->data)[5], -7.0f);
  ASSERT_NE(lumoIpPicQueryTag(out.get(), "NOTE"), nullptr);

  EXPECT_EQ(lumoIpPicConvert(in.get(), lumoIpPicFloat, 16), nullptr);
  EXPECT_EQ(lumoIpPicConvert(in.get(), lumoIpPicUnknown, 8), nullptr);
  lumoIpPicFreeData(in.get());
  EXPECT_EQ(lumoIpPicConvert(in.get(), lumoIpPicFloat, 32), nullptr) << "no data to convert";
}

TEST(PicDescriptorExtrema, FindsSmallestAndLargestSkippingNaN)
{
  double lo = 0;
  double hi = 0;
  const PicPointer shorts = volumeOf<std::int16_t>(lumoIpPicInt, { 5, -300, 17, 2 });
  ASSERT_TRUE(lumoIpPicExtrema(shorts.get(), &lo, &hi));
  EXPECT_EQ(lo, -300.0);
  EXPECT_EQ(hi, 17.0);

  const PicPointer reals = volumeOf<double>(lumoIpPicFloat, { notANumber, 2.5, -inf, notANumber });
  ASSERT_TRUE(lumoIpPicExtrema(reals.get(), &lo, &hi));
  EXPECT_EQ(lo, -inf);
  EXPECT_EQ(hi, 2.5);

  lo = 11;
  hi = 12;
  const PicPointer allNaN = volumeOf<float>(lumoIpPicFloat, { std::nanf(""), std::nanf("") });
  EXPECT_FALSE(lumoIpPicExtrema(allNaN.get(), &lo, &hi));
  EXPECT_EQ(lo, 11.0) << "outputs untouched on failure";
  EXPECT_EQ(hi, 12.0);

  PicPointer empty(lumoIpPicNew(), lumoIpPicFree);
  EXPECT_FALSE(lumoIpPicExtrema(empty.get(), &lo, &hi));
  EXPECT_FALSE(lumoIpPicExtrema(shorts.get(), nullptr, &hi));
}

TEST(PicDescriptorClone, CopiesDataAndTagsDeeply)
{
  PicPointer original = volumeOf<std::uint16_t>(lumoIpPicUInt, { 1, 2, 65535 });
  const double spacing[3] = { 0.5, 0.5, 2.0 };
  ASSERT_TRUE(lumoIpPicSetVectorTag(original.get(), lumoIpPicTagSpacing, spacing));
  const PicPointer copy(lumoIpPicClone(original.get()), lumoIpPicFree);
  ASSERT_TRUE(copy);
  ASSERT_NE(copy->data, original->data);
  EXPECT_EQ(elementsOf<std::uint16_t>(copy.get()), (std::vector<std::uint16_t>{ 1, 2, 65535 }));
  static_cast<std::uint16_t *>(original->data)[0] = 9;
  ASSERT_TRUE(lumoIpPicDeleteTag(original.get(), lumoIpPicTagSpacing));
  EXPECT_EQ(static_cast<const std::uint16_t *>(copy->data)[0], 1) << "the copy shares no voxels";
  double read[3] = {};
  ASSERT_TRUE(lumoIpPicGetVectorTag(copy.get(), lumoIpPicTagSpacing, read)) << "the copy keeps its own tags";
  EXPECT_EQ(read[2], 2.0);

  lumoIpPicFreeData(original.get());
  const PicPointer headerOnly(lumoIpPicClone(original.get()), lumoIpPicFree);
  ASSERT_TRUE(headerOnly);
  EXPECT_EQ(headerOnly->data, nullptr);
  EXPECT_EQ(headerOnly->n[0], 3u);
  EXPECT_EQ(lumoIpPicClone(nullptr), nullptr);
}

TEST(PicDescriptorTags, AddReplaceDeleteAndQuery)
{
  PicPointer pic(lumoIpPicNew(), lumoIpPicFree);
  ASSERT_TRUE(lumoIpPicAddTag(pic.get(), textTag("A", "one")));
  ASSERT_TRUE(lumoIpPicAddTag(pic.get(), textTag("B", "two")));
  ASSERT_TRUE(lumoIpPicAddTag(pic.get(), textTag("A", "three")));
  ASSERT_EQ(pic->tags.size(), 2u) << "same name replaces";
  EXPECT_EQ(pic->tags[0].name, "A") << "replacing keeps the position";
  const lumoIpPicTag * a = lumoIpPicQueryTag(pic.get(), "A");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(std::string(a->value.begin(), a->value.end()), "three");
  EXPECT_EQ(lumoIpPicQueryTag(pic.get(), "a"), nullptr) << "names are case-sensitive";

  EXPECT_TRUE(lumoIpPicAddTag(pic.get(), textTag(std::string(32, 'N'), "")));
  EXPECT_FALSE(lumoIpPicAddTag(pic.get(), textTag(std::string(33, 'N'), "")));
  EXPECT_FALSE(lumoIpPicAddTag(pic.get(), textTag("", "x")));
  EXPECT_EQ(pic->tags.size(), 3u);

  EXPECT_TRUE(lumoIpPicDeleteTag(pic.get(), "A"));
  EXPECT_FALSE(lumoIpPicDeleteTag(pic.get(), "A"));
  EXPECT_EQ(lumoIpPicQueryTag(pic.get(), "A"), nullptr);
  EXPECT_EQ(pic->tags[0].name, "B");
}

TEST(PicDescriptorTags, VectorTagsHoldThreeDoublesAndRefuseMalformedOnes)
{
  PicPointer pic(lumoIpPicNew(), lumoIpPicFree);
  const double origin[3] = { -12.5, 0.0, 300.25 };
  ASSERT_TRUE(lumoIpPicSetVectorTag(pic.get(), lumoIpPicTagOrigin, origin));
  const lumoIpPicTag * tag = lumoIpPicQueryTag(pic.get(), "ORIGIN");
  ASSERT_NE(tag, nullptr);
  EXPECT_EQ(tag->type, lumoIpPicFloat);
  EXPECT_EQ(tag->bpe, 64u);
  EXPECT_EQ(tag->value.size(), 24u);
  double read[3] = {};
  ASSERT_TRUE(lumoIpPicGetVectorTag(pic.get(), lumoIpPicTagOrigin, read));
  EXPECT_EQ(read[0], -12.5);
  EXPECT_EQ(read[2], 300.25);

  ASSERT_TRUE(lumoIpPicAddTag(pic.get(), textTag("SPACING", "1 1 1")));
  double untouched[3] = { 7, 8, 9 };
  EXPECT_FALSE(lumoIpPicGetVectorTag(pic.get(), lumoIpPicTagSpacing, untouched));
  EXPECT_EQ(untouched[0], 7.0);
  EXPECT_FALSE(lumoIpPicGetVectorTag(pic.get(), "MISSING", untouched));
  EXPECT_FALSE(lumoIpPicSetVectorTag(pic.get(), "X", nullptr));
  EXPECT_FALSE(lumoIpPicGetVectorTag(pic.get(), lumoIpPicTagOrigin, nullptr));
}

TEST(PicDescriptorSize, ElementsAndBytesWithOverflowGivingZero)
{
  lumoIpPicDescriptor pic;
  pic.type = lumoIpPicInt;
  pic.bpe = 16;
  pic.dim = 3;
  pic.n[0] = 4;
  pic.n[1] = 5;
  pic.n[2] = 6;
  EXPECT_EQ(lumoIpPicElements(&pic), 120u);
  EXPECT_EQ(lumoIpPicSize(&pic), 240u);

  const std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
  pic.dim = 4;
  pic.n[0] = pic.n[1] = pic.n[2] = pic.n[3] = most;
  EXPECT_EQ(lumoIpPicElements(&pic), std::numeric_limits<std::size_t>::max()) << "saturates";
  EXPECT_EQ(lumoIpPicSize(&pic), 0u);

  // The element count fits, the byte count does not: (2^32 - 1) * 2^31 elements of 8 bytes.
  pic.type = lumoIpPicFloat;
  pic.bpe = 64;
  pic.dim = 2;
  pic.n[1] = 1u << 31;
  EXPECT_EQ(lumoIpPicElements(&pic), std::size_t{ most } << 31);
  EXPECT_EQ(lumoIpPicSize(&pic), 0u);

  pic.dim = 0;
  EXPECT_EQ(lumoIpPicElements(&pic), 0u);
  EXPECT_EQ(lumoIpPicSize(&pic), 0u);
  EXPECT_EQ(lumoIpPicSize(nullptr), 0u);
}

TEST(PicDescriptorAllocate, RefusesAnInvalidHeaderAndDropsTheOldBuffer)
{
  PicPointer pic = volume(lumoIpPicUInt, 8, { 4, 4 });
  ASSERT_NE(pic->data, nullptr);
  pic->n[1] = 0;
  EXPECT_FALSE(lumoIpPicAllocateData(pic.get()));
  EXPECT_EQ(pic->data, nullptr);
  pic->n[1] = 4;
  pic->dim = 9;
  EXPECT_FALSE(lumoIpPicAllocateData(pic.get()));
  pic->dim = 0;
  EXPECT_FALSE(lumoIpPicAllocateData(pic.get()));
  pic->dim = 2;
  pic->type = lumoIpPicFloat;
  pic->bpe = 16;
  EXPECT_FALSE(lumoIpPicAllocateData(pic.get()));
  EXPECT_EQ(pic->data, nullptr);
  pic->bpe = 32;
  ASSERT_TRUE(lumoIpPicAllocateData(pic.get()));
  EXPECT_EQ(elementsOf<float>(pic.get()), std::vector<float>(16, 0.0f)) << "zeroed";
  EXPECT_FALSE(lumoIpPicAllocateData(nullptr));
  const std::uint32_t sizes[2] = { 3, 0 };
  EXPECT_EQ(lumoIpPicNewVolume(lumoIpPicUInt, 8, 2, sizes), nullptr);
}

TEST(PicDescriptorKinds, SupportedCombinationsOfTypeAndBits)
{
  EXPECT_TRUE(lumoIpPicKindIsSupported(lumoIpPicBool, 8));
  EXPECT_FALSE(lumoIpPicKindIsSupported(lumoIpPicBool, 16));
  EXPECT_TRUE(lumoIpPicKindIsSupported(lumoIpPicASCII, 8));
  for (const std::uint32_t bpe : { 8u, 16u, 32u, 64u })
  {
    EXPECT_TRUE(lumoIpPicKindIsSupported(lumoIpPicInt, bpe));
    EXPECT_TRUE(lumoIpPicKindIsSupported(lumoIpPicUInt, bpe));
  }
  EXPECT_FALSE(lumoIpPicKindIsSupported(lumoIpPicUInt, 24));
  EXPECT_TRUE(lumoIpPicKindIsSupported(lumoIpPicFloat, 32));
  EXPECT_TRUE(lumoIpPicKindIsSupported(lumoIpPicFloat, 64));
  EXPECT_FALSE(lumoIpPicKindIsSupported(lumoIpPicFloat, 8));
  EXPECT_FALSE(lumoIpPicKindIsSupported(lumoIpPicUnknown, 8));
}
