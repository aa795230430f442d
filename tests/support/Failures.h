#pragma once

/// What calls throw.

#include <gtest/gtest.h>

#include <optional>
#include <string>

/// What `call` throws as an exception of type E; fails the test if it throws nothing.
template <typename E, typename Call>
std::optional<E> catchFailure(Call const& call)
{
    try {
        call();
    } catch (E const& failure) {
        return failure;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// The text of the E that `call` throws; empty if it throws nothing.
template <typename E, typename Call>
std::string messageOf(Call const& call)
{
    try {
        call();
    } catch (E const& failure) {
        return failure.what();
    }
    return "";
}

/// Expects `text` to be one line in which `part` stands.
inline void expectLineWith(std::string const& part, std::string const& text)
{
    EXPECT_NE(text.find(part), std::string::npos) << part << "\nis not in: " << text;
    EXPECT_EQ(text.find('\n'), std::string::npos) << text;
}
