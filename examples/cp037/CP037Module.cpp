// The module: one class table, one DllModule over it, and the four exported
// functions that loaders and qvcl3-regsvr look for.

#include "CP037Converter.h"

#include <qv/core/ClassFactory.h>
#include <qv/core/DllModule.h>

namespace {

qv::qvcom::ClassData g_classes[] = {
    QV_CLASS_DATA_ENTRY(CP037Converter, CP037Converter::clsid),
    QV_CLASS_DATA_END,
};

qv::qvcom::DllModule g_module(g_classes);

} // namespace

QV_DLL_MODULE_EXPORTS(g_module)
