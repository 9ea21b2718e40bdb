// krVideoItem: something a module draws. Items live in their module's item list from construction
// (when asked to) until destruction; the draw walk lets them enter the video's queues.
#pragma once

class krModule;

class krVideoItem {
public:
    // With `add` set the item enters the module's item list, which then owns it.
    krVideoItem(krModule* module, bool add);
    krVideoItem(const krVideoItem&) = delete;
    krVideoItem& operator=(const krVideoItem&) = delete;
    virtual ~krVideoItem();

    virtual const char* className() const { return "krVideoItem"; }
    krModule* getModule() const { return module; }

    virtual void draw() {}
    virtual void drawAlpha() {}
    virtual void drawQuery() {}
    virtual bool readQuery() { return false; }
    virtual void drawGlow() {}

protected:
    krModule* module;
    bool listed;
};
