// The places of the containers' fields, read through raw memory: inline code in binaries that were
// built against an earlier library goes there directly.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

#include "Klikro/Smatrix"
#include "Klikro/matrix"
#include "Klikro/matrixInt"

namespace {

// The T that stands `offset` bytes into `object`.
template <typename T>
T fieldAt(const void* object, std::size_t offset) {
  T value;
  std::memcpy(&value, static_cast<const std::byte*>(object) + offset, sizeof value);
  return value;
}

constexpr std::size_t kPointer = sizeof(void*);

// Counts the runs of the complete destructor of a container derived in a caller.
template <typename Container>
class Counted : public Container {
 public:
  explicit Counted(int* runs) : Container(1, 1, 0), runs_(runs) {}
  ~Counted() override { ++*runs_; }

 private:
  int* runs_;
};

// Calls what stands in the first slot of the object's virtual table, without deleting: in this
// order of slots the complete destructor comes first, the deleting one after it.
template <typename Container>
int runsOfTheFirstSlot() {
  int runs = 0;
  alignas(Counted<Container>) std::byte storage[sizeof(Counted<Container>)];
  auto* object = new (storage) Counted<Container>(&runs);
  const void* table = fieldAt<const void*>(object, 0);
  using Destructor = void (*)(void*);
  const auto destroy = fieldAt<Destructor>(table, 0);
  destroy(object);
  return runs;
}

TEST(MatrixLayout, BufferRowsColumnsAndCountFollowTheVirtualTable) {
  matrix m(2, 3, 7.0);
  EXPECT_EQ(fieldAt<double*>(&m, kPointer), m.data());
  EXPECT_EQ(fieldAt<double>(fieldAt<double*>(&m, kPointer), 5 * sizeof(double)), 7.0);
  EXPECT_EQ(fieldAt<int>(&m, 2 * kPointer), 2);
  EXPECT_EQ(fieldAt<int>(&m, 2 * kPointer + 4), 3);
  EXPECT_EQ(fieldAt<int>(&m, 2 * kPointer + 8), 6);
}

TEST(MatrixLayout, ABorrowedBufferStandsInTheSamePlace) {
  double values[] = {1.0, 2.0};
  matrix m(2, 1, values, true);
  EXPECT_EQ(fieldAt<double*>(&m, kPointer), values);
}

TEST(MatrixLayout, TheVirtualDestructorIsTheFirstSlot) {
  EXPECT_EQ(runsOfTheFirstSlot<matrix>(), 1);
}

TEST(MatrixIntLayout, BufferRowsColumnsAndCountFollowTheVirtualTable) {
  matrixInt m(2, 3, 7);
  EXPECT_EQ(fieldAt<int*>(&m, kPointer), m.data());
  EXPECT_EQ(fieldAt<int>(fieldAt<int*>(&m, kPointer), 5 * sizeof(int)), 7);
  EXPECT_EQ(fieldAt<int>(&m, 2 * kPointer), 2);
  EXPECT_EQ(fieldAt<int>(&m, 2 * kPointer + 4), 3);
  EXPECT_EQ(fieldAt<int>(&m, 2 * kPointer + 8), 6);
}

TEST(MatrixIntLayout, TheVirtualDestructorIsTheFirstSlot) {
  EXPECT_EQ(runsOfTheFirstSlot<matrixInt>(), 1);
}

TEST(SmatrixLayout, CountRowsColumnsThenTheStringsWithoutAVirtualTable) {
  wchar_t poor[] = L"Poor";
  wchar_t good[] = L"Good";
  wchar_t* labels[] = {poor, good};
  const Smatrix m(2, 1, labels, 0, 0);
  EXPECT_EQ(fieldAt<int>(&m, 0), 2);
  EXPECT_EQ(fieldAt<int>(&m, 4), 2);
  EXPECT_EQ(fieldAt<int>(&m, 8), 1);
  EXPECT_FALSE(std::is_polymorphic_v<Smatrix>);
  // Three ints take 12 bytes; the pointer is aligned to its own size.
  const std::size_t elements = (12 + kPointer - 1) / kPointer * kPointer;
  const auto* strings = static_cast<const std::wstring*>(fieldAt<const void*>(&m, elements));
  EXPECT_EQ(strings[0], L"Poor");
  EXPECT_EQ(strings[1], L"Good");
}

TEST(SmatrixLayout, CountAndColumnsAreNotConfusedWithRows) {
  wchar_t label[] = L"x";
  wchar_t* labels[] = {label, label, label, label, label, label};
  const Smatrix m(2, 3, labels, 0, 0);
  EXPECT_EQ(fieldAt<int>(&m, 0), 6);
  EXPECT_EQ(fieldAt<int>(&m, 4), 2);
  EXPECT_EQ(fieldAt<int>(&m, 8), 3);
}

}  // namespace
