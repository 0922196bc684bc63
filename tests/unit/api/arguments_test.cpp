#include <iterator>
#include <utility>

#include <gtest/gtest.h>

#include "api/arguments.h"
#include "api/error_names.h"
#include "port/Port.h"
#include "support/pointers.h"

namespace zvgentl {

namespace {

using zvtest::all_ones;

TEST(Arguments, AreMissingWhenNullOrAllOnes)
{
    const int here = 0;
    EXPECT_TRUE(is_missing(nullptr));
    EXPECT_TRUE(is_missing(all_ones<void*>()));
    EXPECT_FALSE(is_missing(&here));
    EXPECT_FALSE(is_missing(reinterpret_cast<void*>(1)));
    EXPECT_FALSE(is_missing(reinterpret_cast<void*>(UINTPTR_MAX - 1)));
    EXPECT_FALSE(is_missing(reinterpret_cast<void*>(uintptr_t{0xFFFFFFFF}))) << "all bits, not the low ones";
}

TEST(Arguments, LogTheLowBitsOfASize)
{
    EXPECT_EQ(0, logged_size(nullptr));
    EXPECT_EQ(0, logged_size(all_ones<const size_t*>()));
    for (const auto& [size, logged] :
         {std::pair{size_t{0}, 0}, {size_t{17}, 17}, {size_t{0x100000002}, 2}, {SIZE_MAX, -1}})
        EXPECT_EQ(logged, logged_size(&size));
}

struct NamedCode {
    int32_t code;
    const char* name;
};

TEST(ErrorNames, AreThoseOfTheStandard)
{
    for (const NamedCode& row :
         {NamedCode{0, "GC_ERR_SUCCESS"}, NamedCode{-1001, "GC_ERR_ERROR"},
          NamedCode{-1002, "GC_ERR_NOT_INITIALIZED"}, NamedCode{-1003, "GC_ERR_NOT_IMPLEMENTED"},
          NamedCode{-1004, "GC_ERR_RESOURCE_IN_USE"}, NamedCode{-1005, "GC_ERR_ACCESS_DENIED"},
          NamedCode{-1006, "GC_ERR_INVALID_HANDLE"}, NamedCode{-1007, "GC_ERR_INVALID_ID"},
          NamedCode{-1009, "GC_ERR_INVALID_PARAMETER"}, NamedCode{-1011, "GC_ERR_TIMEOUT"},
          NamedCode{-1012, "GC_ERR_ABORT"}, NamedCode{-1013, "GC_ERR_INVALID_BUFFER"},
          NamedCode{-1014, "GC_ERR_NOT_AVAILABLE"}, NamedCode{-1015, "GC_ERR_INVALID_ADDRESS"},
          NamedCode{-1016, "GC_ERR_BUFFER_TOO_SMALL"}, NamedCode{-1017, "GC_ERR_INVALID_INDEX"}})
        EXPECT_STREQ(row.name, error_name(row.code));
    for (const int32_t code : {-1008, -1010, -1018, 1, -1})
        EXPECT_STREQ("unknown error", error_name(code));
    EXPECT_EQ(16U, std::size(error_names));
}

TEST(ModuleKinds, HaveNoOtherNumbers)
{
    for (const int32_t kind : {-1, 7, 100, INT32_MIN, INT32_MAX})
        EXPECT_STREQ("Invalid handle", handle_type_name(static_cast<ModuleKind>(kind)));
}

} // namespace

} // namespace zvgentl
