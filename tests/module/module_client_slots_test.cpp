// The client callback interface as a client in another language builds it: a plain table
// of four function pointers in the documented slot order (0 GetCurveButtonImages,
// 1 GetCurveButtonText, 2 ResetCurve, 3 NewCurveCreated), each taking the interface
// pointer first. The module, loaded as a host loads it, must call every slot with the
// arguments of that slot, from the paths that call the client: SetCurveCount, the editor
// building its curve buttons, and the editor's "Reset Curves" command.
#include "doctest/doctest.h"
#include "host/actctx.h"
#include "host/hold.h"
#include "module/module_support.h"

#include <string>
#include <vector>

using namespace moduletest;

namespace {

struct PlainClient;

/// The table, field for field: nothing before the first slot, nothing between.
struct PlainClientTable {
    BOOL (*getCurveButtonImages)(PlainClient* self, HIMAGELIST* images, ICurveCtl* control);
    BOOL (*getCurveButtonText)(PlainClient* self, int i, CStr* text, ICurveCtl* control);
    void (*resetCurve)(PlainClient* self, int i, ICurveCtl* control);
    void (*newCurveCreated)(PlainClient* self, int i, ICurveCtl* control);
};

/// One call as the client received it.
struct Call {
    std::string slot;
    int index;          // the curve index (-1 for the image query)
    ICurveCtl* control; // the control that called
    bool selfRight;     // the interface pointer came first
};

/// The interface object: its first word is the table, as a compiled interface's would be.
struct PlainClient {
    const PlainClientTable* table;
    std::vector<Call> calls;
    HIMAGELIST images = nullptr; // what the image query hands out
};

BOOL plainImages(PlainClient* self, HIMAGELIST* images, ICurveCtl* control);
BOOL plainText(PlainClient* self, int i, CStr* text, ICurveCtl* control);
void plainReset(PlainClient* self, int i, ICurveCtl* control);
void plainNew(PlainClient* self, int i, ICurveCtl* control);

const PlainClientTable kTable = {plainImages, plainText, plainReset, plainNew};

// Every plain client of this file, so that a call can tell whether its first argument is
// the interface it was made through.
std::vector<PlainClient*>& liveClients() {
    static std::vector<PlainClient*> all;
    return all;
}

bool isClient(const PlainClient* p) {
    for (const PlainClient* c : liveClients())
        if (c == p)
            return true;
    return false;
}

void record(PlainClient* self, const char* slot, int index, ICurveCtl* control) {
    const bool right = isClient(self);
    // A call through the wrong slot passes another argument in the first place: never
    // touch the object then.
    if (right)
        self->calls.push_back(Call{slot, index, control, true});
    else
        liveClients().front()->calls.push_back(Call{slot, index, control, false});
}

BOOL plainImages(PlainClient* self, HIMAGELIST* images, ICurveCtl* control) {
    record(self, "images", -1, control);
    if (!isClient(self) || !images || !self->images)
        return FALSE;
    *images = self->images;
    return TRUE;
}

BOOL plainText(PlainClient* self, int i, CStr* text, ICurveCtl* control) {
    record(self, "text", i, control);
    if (!isClient(self) || !text)
        return FALSE;
    text->printf("Plain %d", i);
    return TRUE;
}

void plainReset(PlainClient* self, int i, ICurveCtl* control) { record(self, "reset", i, control); }

void plainNew(PlainClient* self, int i, ICurveCtl* control) { record(self, "new", i, control); }

/// The client's object: answers the callback interface id with the plain table's object.
class PlainClientObject : public ReferenceTarget {
public:
    PlainClientObject() {
        plain.table = &kTable;
        liveClients().push_back(&plain);
    }
    ~PlainClientObject() override { liveClients().clear(); }
    void* GetInterface(ULONG id) override {
        return id == CURVE_CLIENT_INTERFACE_ID ? static_cast<void*>(&plain)
                                               : ReferenceTarget::GetInterface(id);
    }
    PlainClient plain;
};

std::vector<std::string> slotsOf(const std::vector<Call>& calls) {
    std::vector<std::string> s;
    for (const Call& c : calls)
        s.push_back(c.slot + " " + std::to_string(c.index));
    return s;
}

} // namespace

TEST_CASE("a client whose callback interface is a plain table of four function pointers") {
    theHold.Reset();
    auto* client = new PlainClientObject;
    client->plain.images = ActCtxImageList_Create(16, 15, ILC_COLOR24, 4, 0);
    REQUIRE(client->plain.images != nullptr);
    ICurveCtl* control = As<ICurveCtl>(Plugin().LibClassDesc(0)->Create(FALSE));
    REQUIRE(control != nullptr);
    control->RegisterClientObject(client);
    std::vector<Call>& calls = client->plain.calls;

    // Slot 3, once per new curve in ascending order.
    control->SetCurveCount(3, FALSE);
    CHECK(slotsOf(calls) == std::vector<std::string>{"new 0", "new 1", "new 2"});
    for (const Call& c : calls) {
        CHECK(c.selfRight);
        CHECK(c.control == control);
    }

    // Slots 0 and 1, as the editor builds its curve buttons.
    BitArray shown(3);
    shown.SetAll();
    control->SetShownCurves(shown);
    control->SetControlFlags(CC_DEFAULT_FLAGS); // floating, with the edit toolbar
    calls.clear();
    REQUIRE(control->SetEditorOpen(TRUE));
    CHECK(slotsOf(calls) == std::vector<std::string>{"images -1", "text 0", "text 1", "text 2"});
    for (const Call& c : calls) {
        CHECK(c.selfRight);
        CHECK(c.control == control);
    }

    // Slot 2, from the editor's "Reset Curves" command, for each displayed curve.
    HWND frame = control->GetEditorWindow();
    REQUIRE(frame);
    HWND editor = FindWindowExA(frame, nullptr, "BaseWindow", nullptr);
    REQUIRE(editor);
    calls.clear();
    SendMessageA(editor, WM_COMMAND, MAKEWPARAM(660, 0), 0);
    CHECK(slotsOf(calls) == std::vector<std::string>{"reset 0", "reset 1", "reset 2"});
    for (const Call& c : calls) {
        CHECK(c.selfRight);
        CHECK(c.control == control);
    }

    // And from the operation itself, for the displayed curves only.
    shown.Clear(1);
    control->SetShownCurves(shown);
    calls.clear();
    control->ResetSelectedCurves();
    CHECK(slotsOf(calls) == std::vector<std::string>{"reset 0", "reset 2"});

    control->SetEditorOpen(FALSE);
    control->DeleteThis();
    ActCtxImageList_Destroy(client->plain.images);
    client->DeleteThis();
    theHold.Reset();
}
