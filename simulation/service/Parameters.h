#pragma once

#include "simulation/service/Messages.h"

#include <cstring>
#include <tuple>

namespace kora::simulation {

/// Puts values one after the other, without gaps.
class Packer
{
public:
    explicit Packer(unsigned char* payload) : place(payload) {}
    template <typename T>
    void put(const T& value)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        std::memcpy(place, &value, sizeof value);
        place += sizeof value;
    }

private:
    unsigned char* place;
};

class Unpacker
{
public:
    explicit Unpacker(const unsigned char* payload) : place(payload) {}
    template <typename T>
    void take(T& value)
    {
        std::memcpy(&value, place, sizeof value);
        place += sizeof value;
    }
    /// Any byte but 0 is true: a foreign one must not become a bool as it is.
    bool takeBool()
    {
        unsigned char byte = 0;
        take(byte);
        return byte != 0;
    }

private:
    const unsigned char* place;
};

/// How a parameter travels, by its type. On the service's side `Held` keeps it for the length of the call. This one
/// is for values.
template <typename T>
struct Parameter
{
    using Held = T;
    static constexpr bool travels = true;
    static constexpr std::size_t requestBytes = sizeof(T);
    static constexpr std::size_t replyBytes = 0;

    static void pack(Packer& request, const T& value) { request.put(value); }
    static Held unpack(Unpacker& request)
    {
        if constexpr (std::is_same_v<T, bool>) {
            return request.takeBool();
        } else {
            T value;
            request.take(value);
            return value;
        }
    }
    static const T& argument(Held& held) { return held; }
    static void packResult(Packer&, const Held&) {}
    static void unpackResult(Unpacker&, const T&) {}
};

template <typename T>
struct Parameter<const T&> : Parameter<T>
{
};

/// Places for `count` values that the operation stores, or null where they are not wanted.
template <typename T, std::size_t count>
struct OutputParameter
{
    struct Held
    {
        bool wanted;
        T values[count];
    };
    static constexpr bool travels = true;
    static constexpr std::size_t requestBytes = 1;
    static constexpr std::size_t replyBytes = sizeof(T[count]);

    static void pack(Packer& request, const T* place) { request.put(place != nullptr); }
    static Held unpack(Unpacker& request) { return {request.takeBool(), {}}; }
    static T* argument(Held& held) { return held.wanted ? held.values : nullptr; }
    static void packResult(Packer& reply, const Held& held) { reply.put(held.values); }
    static void unpackResult(Unpacker& reply, T* place)
    {
        T values[count];
        reply.take(values);
        if (place)
            std::memcpy(place, values, sizeof values);
    }
};

template <typename T>
struct Parameter<T*> : OutputParameter<T, 1>
{
};

/// The firmware version of a port.
template <>
struct Parameter<char*> : OutputParameter<char, sizeof SFPinfo::version>
{
};

/// Values of the four outputs, which are read.
template <>
struct Parameter<float*>
{
    struct Held
    {
        bool given;
        float values[4];
    };
    static constexpr bool travels = true;
    static constexpr std::size_t requestBytes = 1 + sizeof(float[4]);
    static constexpr std::size_t replyBytes = 0;

    static void pack(Packer& request, const float* values)
    {
        request.put(values != nullptr);
        float copy[4] = {};
        if (values)
            std::memcpy(copy, values, sizeof copy);
        request.put(copy);
    }
    static Held unpack(Unpacker& request)
    {
        Held held;
        held.given = request.takeBool();
        request.take(held.values);
        return held;
    }
    static float* argument(Held& held) { return held.given ? held.values : nullptr; }
    static void packResult(Packer&, const Held&) {}
    static void unpackResult(Unpacker&, const float*) {}
};

/// A text of at most 32 characters, without a terminator if it has so many; what is longer is cut, null is empty.
template <>
struct Parameter<const char*>
{
    static constexpr std::size_t longest = 32;
    struct Held
    {
        char text[longest + 1];
    };
    static constexpr bool travels = true;
    static constexpr std::size_t requestBytes = longest;
    static constexpr std::size_t replyBytes = 0;

    static void pack(Packer& request, const char* text)
    {
        char copy[longest] = {};
        if (text)
            std::memcpy(copy, text, strnlen(text, longest));
        request.put(copy);
    }
    static Held unpack(Unpacker& request)
    {
        Held held = {};
        char copy[longest];
        request.take(copy);
        std::memcpy(held.text, copy, longest);
        return held;
    }
    static const char* argument(Held& held) { return held.text; }
    static void packResult(Packer&, const Held&) {}
    static void unpackResult(Unpacker&, const char*) {}
};

/// Room for records of the stream. They lie in shared memory and do not travel.
template <>
struct Parameter<void*>
{
    static constexpr bool travels = false;
};

template <typename T>
struct Identity
{
    using Type = T;
};
/// A parameter of which nothing is deduced.
template <typename T>
using Given = typename Identity<T>::Type;

/// The two ways of a call: `pack` and `unpack` at the program, `carryOut` at the service.
template <typename Member>
struct Call;

template <typename Target, typename Result, typename... Arguments>
struct Call<Result (Target::*)(Arguments...)>
{
    static constexpr bool travels = (Parameter<Arguments>::travels && ...);

    static void pack(Request& request, Arguments... arguments)
    {
        static_assert((Parameter<Arguments>::requestBytes + ... + 0) <= requestPayload);
        [[maybe_unused]] Packer packer(request.payload);
        (Parameter<Arguments>::pack(packer, arguments), ...);
    }

    /// Stores what the operation stored, which is nothing if it failed.
    static Result unpack(const Reply& reply, Arguments... arguments)
    {
        if constexpr (!std::is_void_v<Result>) {
            Unpacker unpacker(reply.payload);
            Result result;
            unpacker.take(result);
            if constexpr (std::is_same_v<Result, int>) {
                if (result >= 0)
                    (Parameter<Arguments>::unpackResult(unpacker, arguments), ...);
            }
            return result;
        }
    }

    static void carryOut(Target& target, Result (Target::*member)(Arguments...), const Request& request, Reply& reply)
    {
        if constexpr (travels) {
            [[maybe_unused]] Unpacker unpacker(request.payload);
            // Braces keep the order of the parameters.
            std::tuple<typename Parameter<Arguments>::Held...> held{Parameter<Arguments>::unpack(unpacker)...};
            const auto call = [&](auto&... each) { return (target.*member)(Parameter<Arguments>::argument(each)...); };
            if constexpr (std::is_void_v<Result>) {
                std::apply(call, held);
            } else {
                static_assert(sizeof(Result) + (Parameter<Arguments>::replyBytes + ... + 0) <= replyPayload);
                Packer packer(reply.payload);
                packer.put(Result(std::apply(call, held)));
                std::apply([&](auto&... each) { (Parameter<Arguments>::packResult(packer, each), ...); }, held);
            }
        }
    }
};

} // namespace kora::simulation
