#include "editor/model/parameters/NumberExpression.h"

#include <gtest/gtest.h>

TEST(NumberExpression, IsReadAsItIsWrittenOrNotAtAll)
{
    std::map<char, double> const letters = {{'x', 0.25}};
    struct Case {
        char const* text;
        std::optional<double> value;
    };
    for (auto const& [text, value] :
         {Case{"0.18*2", 0.36}, Case{"10 - 3 - 2", 5.0}, Case{"24/2/3*2", 8.0}, Case{"1+2*3", 7.0},
          Case{"-(1 + x) * 2", -2.5}, Case{"2--1", 3.0}, Case{"+.5e1", 5.0}, Case{" x ", 0.25},
          Case{"", {}}, Case{"2 3", {}}, Case{"2x", {}}, Case{"(1", {}}, Case{"1)", {}},
          Case{"1/0", {}}, Case{"y", {}}, Case{"1,5", {}}, Case{"2*", {}}, Case{"nan", {}}}) {
        EXPECT_EQ(evaluateExpression(text, letters), value) << text;
    }
    EXPECT_EQ(evaluateExpression(std::string(100'000, '('), {}), std::nullopt);
}
