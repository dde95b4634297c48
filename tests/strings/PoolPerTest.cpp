// SPDX-License-Identifier: MIT
// An autorelease pool around every test of the program.
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <gtest/gtest.h>

namespace {

struct PoolPerTest : ::testing::EmptyTestEventListener {
    unsigned token = 0;
    void OnTestStart(const ::testing::TestInfo &) override { token = ZPPushAutoreleasePool(0); }
    void OnTestEnd(const ::testing::TestInfo &) override { ZPPopAutoreleasePool(token); }
};

[[maybe_unused]] const bool installed = (::testing::UnitTest::GetInstance()->listeners().Append(new PoolPerTest), true);

}  // namespace
