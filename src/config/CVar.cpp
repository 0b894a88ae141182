#include "ZelUtil/CVar.h"

#include "ProcessObjects.h"

#include <cstdlib>
#include <new>

namespace
{

unsigned int g_count = 0;
CVar* g_newest = nullptr;

} // namespace

// Leaves the other fields alone: the table's records are static and so zero.
CVar::CVar() {}

CVar* CVar_Get(const char* name, const char* defaultText, unsigned int flags)
{
    if (name == nullptr)
        return nullptr;
    for (CVar* variable = g_newest; variable != nullptr; variable = variable->next)
        if (variable->name == name)
        {
            variable->flags |= flags;
            return variable;
        }
    if (defaultText == nullptr || g_count == zel::kVariableCapacity)
        return nullptr;

    CVar& created = zel::g_variables[g_count];
    try
    {
        created.name = name;
        created.valueText = defaultText;
    }
    catch (const std::bad_alloc&)
    {
        created.name.clear();
        return nullptr;
    }
    created.flags = flags;
    created.created = true;
    created.value = static_cast<float>(std::atof(defaultText));
    created.next = g_newest;
    g_newest = &created;
    ++g_count;
    return &created;
}

unsigned int CVar_GetNb()
{
    return g_count;
}

CVar* CVar_GetAt(unsigned int index)
{
    return index < g_count ? &zel::g_variables[index] : nullptr;
}

void CVar_Init(int, char**) {}

void CVar_Fini() {}

void CVar_SaveVars(const char*) {}
