// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSignalSpy>
#include <QTest>

// How long a test waits for what has to happen. Qt's own five seconds are too few where many programs share a
// machine, and a wait that is not used up costs nothing. Every test is compiled with this (kestrel_test()).
constexpr int TestPatience = 30000; // ms

#undef QTRY_VERIFY
#define QTRY_VERIFY(expr) QTRY_VERIFY_WITH_TIMEOUT(expr, TestPatience)
#undef QTRY_VERIFY2
#define QTRY_VERIFY2(expr, message) QTRY_VERIFY2_WITH_TIMEOUT(expr, message, TestPatience)
#undef QTRY_COMPARE
#define QTRY_COMPARE(expr, expected) QTRY_COMPARE_WITH_TIMEOUT(expr, expected, TestPatience)
#undef QTRY_COMPARE_EQ
#define QTRY_COMPARE_EQ(left, right) QTRY_COMPARE_EQ_WITH_TIMEOUT(left, right, TestPatience)
#undef QTRY_COMPARE_NE
#define QTRY_COMPARE_NE(left, right) QTRY_COMPARE_NE_WITH_TIMEOUT(left, right, TestPatience)
#undef QTRY_COMPARE_LT
#define QTRY_COMPARE_LT(left, right) QTRY_COMPARE_LT_WITH_TIMEOUT(left, right, TestPatience)
#undef QTRY_COMPARE_LE
#define QTRY_COMPARE_LE(left, right) QTRY_COMPARE_LE_WITH_TIMEOUT(left, right, TestPatience)
#undef QTRY_COMPARE_GT
#define QTRY_COMPARE_GT(left, right) QTRY_COMPARE_GT_WITH_TIMEOUT(left, right, TestPatience)
#undef QTRY_COMPARE_GE
#define QTRY_COMPARE_GE(left, right) QTRY_COMPARE_GE_WITH_TIMEOUT(left, right, TestPatience)
