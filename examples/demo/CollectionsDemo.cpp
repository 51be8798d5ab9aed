// Lists walked both ways, sublists, map views, sorting and read-only views.
#include "Demo.h"

#include <cstdio>

using namespace qv::collections::qvcom;

void demoCollections()
{
    section("Lists, sublists and map views");
    qv::Reference<LinkedList> list = qv::makeReference<LinkedList>();
    for (int32_t v : {42, 7, 19, 7, 3})
        list->add(qv::makeReference<qv::Integer32>(v)->GetUnknown());
    Collections::sort(*list);
    std::printf("sorted: %s\n", list->toString().toUtf8().c_str());

    std::printf("backwards:");
    qv::Reference<AbstractListIterator> it = list->createListIterator(list->getSize());
    while (it->hasPrevious())
        std::printf(
            " %s",
            qv::Reference<qv::Object>(dynamic_cast<qv::Object*>(it->previous().get()))->toString().toUtf8().c_str());
    std::printf("\n");

    qv::Reference<AbstractList> middle = list->subList(1, 4);
    middle->removeAt(0);
    std::printf("after removing through subList(1, 4): %s\n", list->toString().toUtf8().c_str());
    list->removeFirst();
    try {
        middle->getSize();
    } catch (const qv::IllegalStateException& e) {
        std::printf("the sublist after a change behind its back: %s\n", e.getDescription().toUtf8().c_str());
    }

    qv::Reference<HashMap> map = qv::makeReference<HashMap>();
    map->put(qv::makeReference<qv::String>(u"apples")->GetUnknown(), qv::makeReference<qv::Integer32>(3)->GetUnknown());
    map->put(qv::makeReference<qv::String>(u"pears")->GetUnknown(), qv::makeReference<qv::Integer32>(5)->GetUnknown());
    map->keySet()->remove(qv::makeReference<qv::String>(u"pears")->GetUnknown());
    std::printf("map after keySet().remove(pears): %s, values %s\n", map->toString().toUtf8().c_str(),
                map->values()->toString().toUtf8().c_str());

    list->add(map->GetUnknown());
    map->put(qv::makeReference<qv::String>(u"list")->GetUnknown(), list->GetUnknown());
    std::printf("a list holding a map holding the list: %s\n", list->toString().toUtf8().c_str());
    map->clear(); // breaks the cycle, so that both are released

    try {
        Collections::unmodifiableList(*list)->add(nullptr);
    } catch (const qv::UnsupportedOperationException& e) {
        std::printf("unmodifiableList(...)->add: %s\n", e.getDescription().toUtf8().c_str());
    }
}
