// Video items: membership in the module's item list.
#include "render/krVideoItem.h"

#include <algorithm>

#include "core/krModule.h"

krVideoItem::krVideoItem(krModule* m, bool add) : module(m), listed(add && m) {
    if (listed) module->getVideoItems().push_back(this);
}

void krVideoItem::joinModule() {
    if (listed || !module) return;
    listed = true;
    module->getVideoItems().push_back(this);
}

krVideoItem::~krVideoItem() {
    if (!listed) return;
    auto& items = module->getVideoItems();
    auto it = std::find(items.begin(), items.end(), this);
    if (it != items.end()) items.erase(it);
}
