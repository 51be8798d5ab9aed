// Lists against the standard containers, side by side in one run: walking a
// LinkedList with its list iterator against walking a std::list of the same
// references, and Collections::sort of Integer32 elements against
// std::stable_sort over the same elements with the same comparison
// (IQVComparable::CompareTo).
#include <qv/collections/qvcom/ArrayList.h>
#include <qv/collections/qvcom/Collections.h>
#include <qv/collections/qvcom/LinkedList.h>
#include <qv/lang/Integer32.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <list>
#include <random>
#include <vector>

using namespace qv;
using namespace qv::collections::qvcom;

namespace {

// QV_LIST_BENCH_SIZE overrides the element count (default 1 000 000).
int32_t elementCount()
{
    const char* text = std::getenv("QV_LIST_BENCH_SIZE");
    return text ? std::atoi(text) : 1000000;
}

const std::vector<Reference<Integer32>>& shuffledNumbers()
{
    static const std::vector<Reference<Integer32>> numbers = [] {
        std::vector<Reference<Integer32>> made;
        std::mt19937 random(1);
        const int32_t count = elementCount();
        made.reserve(static_cast<size_t>(count));
        for (int32_t i = 0; i < count; ++i)
            made.push_back(makeReference<Integer32>(static_cast<int32_t>(random() % static_cast<uint32_t>(count))));
        return made;
    }();
    return numbers;
}

// The lists are built once, in the order of the numbers, so that both sides
// allocate their nodes in the same sequence.
LinkedList& linkedList()
{
    static LinkedList* list = [] {
        LinkedList* made = new LinkedList();
        made->AddRef();
        for (const Reference<Integer32>& number : shuffledNumbers())
            made->add(number->GetUnknown());
        return made;
    }();
    return *list;
}

std::list<Reference<IQVUnknown>>& stdList()
{
    static std::list<Reference<IQVUnknown>> list = [] {
        std::list<Reference<IQVUnknown>> made;
        for (const Reference<Integer32>& number : shuffledNumbers())
            made.emplace_back(number->GetUnknown());
        return made;
    }();
    return list;
}

void LinkedList_ListIterator_Borrowed(benchmark::State& state)
{
    LinkedList& list = linkedList();
    for (auto _ : state) {
        Reference<AbstractListIterator> walk = list.createListIterator(0);
        LinkedListIterator& it = static_cast<LinkedListIterator&>(*walk);
        while (it.hasNext())
            benchmark::DoNotOptimize(it.nextBorrowed());
    }
    state.SetItemsProcessed(state.iterations() * list.getSize());
}

void LinkedList_ListIterator_Next(benchmark::State& state)
{
    LinkedList& list = linkedList();
    for (auto _ : state) {
        Reference<AbstractListIterator> it = list.createListIterator(0);
        while (it->hasNext())
            benchmark::DoNotOptimize(it->next());
    }
    state.SetItemsProcessed(state.iterations() * list.getSize());
}

void LinkedList_ListIterator_Backward(benchmark::State& state)
{
    LinkedList& list = linkedList();
    for (auto _ : state) {
        Reference<AbstractListIterator> it = list.createListIterator(list.getSize());
        while (it->hasPrevious())
            benchmark::DoNotOptimize(it->previous());
    }
    state.SetItemsProcessed(state.iterations() * list.getSize());
}

void StdList_Iteration(benchmark::State& state)
{
    std::list<Reference<IQVUnknown>>& list = stdList();
    for (auto _ : state) {
        for (const Reference<IQVUnknown>& element : list)
            benchmark::DoNotOptimize(element.get());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(list.size()));
}

void StdList_Iteration_Reference(benchmark::State& state)
{
    std::list<Reference<IQVUnknown>>& list = stdList();
    for (auto _ : state) {
        for (const Reference<IQVUnknown>& element : list) {
            Reference<IQVUnknown> copy(element);
            benchmark::DoNotOptimize(copy);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(list.size()));
}

void ArrayList_Sort(benchmark::State& state)
{
    const std::vector<Reference<Integer32>>& numbers = shuffledNumbers();
    ArrayList list(static_cast<int32_t>(numbers.size()));
    for (const Reference<Integer32>& number : numbers)
        list.add(number->GetUnknown());
    for (auto _ : state) {
        state.PauseTiming();
        for (size_t i = 0; i < numbers.size(); ++i)
            list.set(static_cast<int32_t>(i), numbers[i]->GetUnknown());
        state.ResumeTiming();
        Collections::sort(list);
    }
    for (int32_t i = 1; i < list.getSize(); ++i) {
        if (*dynamic_cast<const Integer32*>(list.elementAt(i).get()) <
            *dynamic_cast<const Integer32*>(list.elementAt(i - 1).get())) {
            state.SkipWithError("not sorted");
            break;
        }
    }
}

void StdStableSort_SameComparison(benchmark::State& state)
{
    const std::vector<Reference<Integer32>>& numbers = shuffledNumbers();
    std::vector<Reference<Integer32>> elements;
    for (auto _ : state) {
        state.PauseTiming();
        elements.assign(numbers.begin(), numbers.end());
        state.ResumeTiming();
        std::stable_sort(elements.begin(), elements.end(),
                         [](const Reference<Integer32>& a, const Reference<Integer32>& b) {
                             int order = 0;
                             a->CompareTo(b->GetUnknown(), &order);
                             return order < 0;
                         });
    }
    if (!std::is_sorted(elements.begin(), elements.end(),
                        [](const Reference<Integer32>& a, const Reference<Integer32>& b) { return *a < *b; }))
        state.SkipWithError("not sorted");
}

} // namespace

BENCHMARK(LinkedList_ListIterator_Borrowed)->Unit(benchmark::kMillisecond);
BENCHMARK(LinkedList_ListIterator_Next)->Unit(benchmark::kMillisecond);
BENCHMARK(LinkedList_ListIterator_Backward)->Unit(benchmark::kMillisecond);
BENCHMARK(StdList_Iteration)->Unit(benchmark::kMillisecond);
BENCHMARK(StdList_Iteration_Reference)->Unit(benchmark::kMillisecond);
BENCHMARK(ArrayList_Sort)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(StdStableSort_SameComparison)->Unit(benchmark::kMillisecond)->Iterations(3);

BENCHMARK_MAIN();
