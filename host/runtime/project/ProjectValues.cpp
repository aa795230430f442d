// Single values to JSON and back.

#include "runtime/project/ProjectValues.h"

#include "runtime/project/Project.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace {

using Json = nlohmann::ordered_json;

constexpr char const* keysMember = "keys";
constexpr char const* pointsMember = "points";

[[noreturn]] void fail(std::string const& place, std::string const& wanted)
{
    throw ProjectError(place + " must be " + wanted);
}

/// Turns single values of one type into JSON and back.
template <typename T>
struct Scalar;

template <>
struct Scalar<bool> {
    static Json toJson(bool value, HostValue const&) { return value; }
    static bool fromJson(Json const& json, HostValue const&, std::string const& place)
    {
        return json.is_boolean() ? json.get<bool>() : (fail(place, "true or false"), false);
    }
};

template <>
struct Scalar<double> {
    static Json toJson(double value, HostValue const&) { return value; }
    static double fromJson(Json const& json, HostValue const&, std::string const& place)
    {
        return json.is_number() ? json.get<double>() : (fail(place, "a number"), 0.0);
    }
};

template <>
struct Scalar<int> {
    static Json toJson(int value, HostValue const& owner)
    {
        if (auto const* const choices =
                dynamic_cast<PiEnumPolicy const*>(owner.getPolicy().get())) {
            for (PiEnumPolicy::Pair const& pair : choices->getPairs()) {
                if (pair.first == value) {
                    return pair.second;
                }
            }
        }
        return value;
    }

    static int fromJson(Json const& json, HostValue const& owner, std::string const& place)
    {
        if (auto const* const choices =
                dynamic_cast<PiEnumPolicy const*>(owner.getPolicy().get())) {
            return choiceFromJson(json, *choices, place);
        }
        if (!json.is_number_integer()) {
            fail(place, "a whole number");
        }
        bool const isTooLarge = json.is_number_unsigned() &&
                                json.get<std::uint64_t>() > std::numeric_limits<int>::max();
        auto const number = isTooLarge ? std::int64_t{-1} << 40 : json.get<std::int64_t>();
        if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
            fail(place, "a whole number of at most 32 bits");
        }
        return static_cast<int>(number);
    }

private:
    static int choiceFromJson(Json const& json, PiEnumPolicy const& choices,
                              std::string const& place)
    {
        std::string labels;
        for (PiEnumPolicy::Pair const& pair : choices.getPairs()) {
            if (json.is_string() && json.get_ref<std::string const&>() == pair.second) {
                return pair.first;
            }
            labels += (labels.empty() ? "\"" : ", \"") + pair.second + "\"";
        }
        fail(place, "one of " + labels);
    }
};

template <>
struct Scalar<CurvePoints> {
    static Json toJson(CurvePoints const& points, HostValue const&)
    {
        Json list = Json::array();
        for (GePoint2<float> const& point : points) {
            list.push_back({static_cast<double>(point.x), static_cast<double>(point.y)});
        }
        return {{pointsMember, list}};
    }

    static CurvePoints fromJson(Json const& json, HostValue const&, std::string const& place)
    {
        constexpr char const* wanted = "a curve: {\"points\": [[x, y], ...]}";
        if (!json.is_object() || json.size() != 1 || !json.contains(pointsMember) ||
            !json[pointsMember].is_array()) {
            fail(place, wanted);
        }
        CurvePoints points;
        for (Json const& point : json[pointsMember]) {
            if (!point.is_array() || point.size() != 2 || !point[0].is_number() ||
                !point[1].is_number()) {
                fail(place, wanted);
            }
            points.push_back({point[0].get<float>(), point[1].get<float>()});
        }
        return points;
    }
};

template <typename T>
Json animatedToJson(Animated<T> const& animated, HostValue const& owner)
{
    auto const& keys = animated.getKeys();
    if (!animated.isAnimated()) {
        return Scalar<T>::toJson(keys.front().value, owner);
    }
    Json list = Json::array();
    for (Keyframe<T> const& key : keys) {
        list.push_back(Json::array({key.time, Scalar<T>::toJson(key.value, owner)}));
    }
    return {{keysMember, list}};
}

template <typename T>
Animated<T> animatedFromJson(Json const& json, HostValue const& owner, std::string const& place)
{
    if (!json.is_object() || !json.contains(keysMember)) {
        return Animated<T>(Scalar<T>::fromJson(json, owner, place));
    }
    Json const& list = json[keysMember];
    if (json.size() != 1 || !list.is_array()) {
        fail(place, "keyframes: {\"keys\": [[time, value], ...]}");
    }
    std::vector<Keyframe<T>> keys;
    for (std::size_t index = 0; index < list.size(); ++index) {
        std::string const keyPlace = place + ", key " + std::to_string(index + 1);
        Json const& key = list[index];
        if (!key.is_array() || key.size() != 2 || !key[0].is_number()) {
            fail(keyPlace, "[time, value]");
        }
        keys.push_back({key[0].get<double>(), Scalar<T>::fromJson(key[1], owner, keyPlace)});
    }
    try {
        return Animated<T>(std::move(keys));
    } catch (std::invalid_argument const& error) {
        throw ProjectError(place + ": " + error.what());
    }
}

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::array<std::pair<char const*, double>, 3> numberTexts = {
    {{"inf", infinity}, {"-inf", -infinity}, {"nan", std::numeric_limits<double>::quiet_NaN()}}};

/// Makes a state of the kind that it is shown.
struct StateReader {
    Json const& json;
    HostValue const& owner;
    std::string const& place;

    template <typename T>
    ValueState operator()(Animated<T> const&) const
    {
        return animatedFromJson<T>(json, owner, place);
    }

    ValueState operator()(Vector<double> const&) const
    {
        Vector<double> numbers;
        for (Json const& number : json.is_array() ? json : Json::array({nullptr})) {
            numbers.push_back(number.is_number() ? number.get<double>()
                                                 : (fail(place, "a list of finite numbers"), 0.0));
        }
        return numbers;
    }
};

/// Shows a state as JSON.
struct StateWriter {
    HostValue const& owner;

    template <typename T>
    Json operator()(Animated<T> const& animated) const
    {
        return animatedToJson(animated, owner);
    }
    Json operator()(Vector<double> const& numbers) const
    {
        Json list = Json::array();
        for (double const number : numbers) {
            list.push_back(numberToJson(number));
        }
        return list;
    }
};

} // namespace

nlohmann::ordered_json numberToJson(double number)
{
    for (auto const& [text, meant] : numberTexts) {
        if (number == meant || (std::isnan(number) && std::isnan(meant))) {
            return text;
        }
    }
    return number;
}

nlohmann::ordered_json valueToJson(HostValue const& value)
{
    return std::visit(StateWriter{value}, *value.getState());
}

ValueState valueFromJson(nlohmann::ordered_json const& json, HostValue const& value,
                         std::string const& place)
{
    ValueState state = std::visit(StateReader{json, value, place}, *value.getState());
    try {
        value.checkGiven(state);
    } catch (ValueError const& error) {
        throw ProjectError(place + ": " + error.what());
    }
    return state;
}
