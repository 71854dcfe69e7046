#include "simulation/ControlLibrary.h"
#include "simulation/service/Parameters.h"

#include <QTest>

#include <random>
#include <set>
#include <string>

using namespace kora::simulation;

namespace {

/// Bytes that differ from call to call.
class Dice
{
public:
    template <typename T>
    T value()
    {
        T made;
        unsigned char bytes[sizeof(T)];
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(source());
        std::memcpy(&made, bytes, sizeof made);
        return made;
    }

private:
    std::mt19937 source{20261122};
};

Dice dice;

/// What one argument looked like when it was sent and when it arrived, and what was stored through it.
struct Traces
{
    std::string sent;
    std::string arrived;
    std::string stored;
    std::string received;
};

template <typename T>
void note(std::string& trace, const T& value)
{
    trace.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// An argument as a program gives it, by the type of the parameter.
template <typename T>
struct Sample
{
    T value = dice.value<T>();
    T pass() { return value; }
    void noteSent(std::string& trace) const { note(trace, value); }
    static void arrive(T argument, Traces& traces) { note(traces.arrived, argument); }
    void noteReceived(std::string&) const {}
};

template <typename T>
struct Sample<T*>
{
    static constexpr std::size_t count = std::is_same_v<T, char> ? sizeof SFPinfo::version : 1;
    T places[count] = {};
    T* pass() { return places; }
    void noteSent(std::string&) const {}
    static void arrive(T* argument, Traces& traces)
    {
        for (std::size_t i = 0; i < count; ++i) {
            argument[i] = dice.value<T>();
            note(traces.stored, argument[i]);
        }
    }
    void noteReceived(std::string& trace) const { note(trace, places); }
};

template <>
struct Sample<float*>
{
    float values[4] = {dice.value<float>(), dice.value<float>(), dice.value<float>(), dice.value<float>()};
    float* pass() { return values; }
    void noteSent(std::string& trace) const { note(trace, values); }
    static void arrive(const float* argument, Traces& traces)
    {
        traces.arrived.append(reinterpret_cast<const char*>(argument), sizeof values);
    }
    void noteReceived(std::string&) const {}
};

template <>
struct Sample<const char*>
{
    /// Without a terminator, as a text of 32 characters has none.
    char text[32];
    Sample() { std::fill(std::begin(text), std::end(text), 'x'); }
    const char* pass() { return text; }
    void noteSent(std::string& trace) const { note(trace, text); }
    static void arrive(const char* argument, Traces& traces) { traces.arrived += argument; }
    void noteReceived(std::string&) const {}
};

/// Stands where the control library stands, and notes what arrives.
template <typename Member>
struct Target;
template <typename Owner, typename Result, typename... Arguments>
struct Target<Result (Owner::*)(Arguments...)>
{
    Traces traces;
    Result result = Result(0);

    Result operate(Arguments... arguments)
    {
        (Sample<Arguments>::arrive(arguments, traces), ...);
        return result;
    }

    /// There and back with one set of arguments. @return whether everything came over
    static bool travels(int outcome)
    {
        using Way = Call<Result (Target::*)(Arguments...)>;
        Target target;
        target.result = Result(outcome);
        std::tuple<Sample<Arguments>...> given;
        return std::apply(
            [&](auto&... each) {
                (each.noteSent(target.traces.sent), ...);
                Request request = {};
                Way::pack(request, each.pass()...);
                Reply reply = {};
                Way::carryOut(target, &Target::operate, request, reply);
                const bool same = Way::unpack(reply, each.pass()...) == Result(outcome);
                (each.noteReceived(target.traces.received), ...);
                const std::string stored =
                    outcome < 0 ? std::string(target.traces.stored.size(), '\0') : target.traces.stored;
                return same && target.traces.sent == target.traces.arrived && target.traces.received == stored;
            },
            given);
    }
};

} // namespace

/// Every row of the table of operations, on its way to a service and back.
class OperationTableTest : public QObject
{
    Q_OBJECT

private slots:
    void everyOperationOfTheLibraryIsARow()
    {
        std::set<std::string> names(std::begin(operationNames), std::end(operationNames));
        QCOMPARE(names.size(), std::size_t(38));
        QVERIFY(isOperation("setFBenable") && isOperation("getLock") && !isOperation("join"));
    }

    void argumentsArriveAndWhatIsStoredComesBack()
    {
        int carried = 0;
        const auto tryRow = [&carried](auto member, const char* name) {
            using Member = decltype(member);
            if constexpr (Call<Member>::travels) {
                for (int i = 0; i < 20; ++i) {
                    QVERIFY2(Target<Member>::travels(0), name);
                    QVERIFY2(Target<Member>::travels(3), name);
                    ++carried;
                }
            }
        };
#define KORA_TRY(result, name, ...) tryRow(&ControlLibrary::name, #name);
        KORA_OPERATIONS(KORA_TRY)
#undef KORA_TRY
        // Records of the stream do not travel.
        QCOMPARE(carried, 20 * 37);
    }

    void failedOperationStoresNothing()
    {
        using Getter = int (OperationTableTest::*)(double*, int*, char*);
        QVERIFY(Target<Getter>::travels(-1));
        QVERIFY(Target<Getter>::travels(0));
    }

    void placesThatAreNotWantedStayNull()
    {
        struct Library
        {
            int read(double* value, int* other)
            {
                *other = 5;
                return value == nullptr ? 0 : -1;
            }
        } library;
        using Way = Call<decltype(&Library::read)>;
        Request request = {};
        int other = 0;
        Way::pack(request, nullptr, &other);
        Reply reply = {};
        Way::carryOut(library, &Library::read, request, reply);
        QCOMPARE(Way::unpack(reply, nullptr, &other), 0);
        QCOMPARE(other, 5);
    }

    void missingTextAndValuesAreBorne()
    {
        struct Library
        {
            int take(const char* text, float* values) { return text && !*text && !values ? 0 : -1; }
        } library;
        using Way = Call<decltype(&Library::take)>;
        Request request = {};
        Way::pack(request, nullptr, nullptr);
        Reply reply = {};
        Way::carryOut(library, &Library::take, request, reply);
        QCOMPARE(Way::unpack(reply, nullptr, nullptr), 0);
    }
};

QTEST_GUILESS_MAIN(OperationTableTest)
#include "OperationTableTest.moc"
