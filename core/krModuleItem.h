// krModuleItem: what a module's item list holds, as the object tree sees it: something the module
// owns, names for scripts (`videoitems`) and destroys with itself. What an item does, drawing,
// belongs to the layer that made it (render/krVideoItem.h).
#pragma once

class krModuleItem {
public:
    krModuleItem() = default;
    krModuleItem(const krModuleItem&) = delete;
    krModuleItem& operator=(const krModuleItem&) = delete;
    // An item takes itself off its module's list here.
    virtual ~krModuleItem() = default;

    virtual const char* className() const = 0;
};
