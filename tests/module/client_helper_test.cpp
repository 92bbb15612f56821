// The client helper (curvectl/client.h) as a client plug-in uses it: the control created
// through the host's class directory, and the registration that keeps the control from
// ever calling a client object that has gone.
//
// A dead client is made observable by construction: the client lives in storage of the
// test, and when it has been destroyed a tombstone object takes its place (as another
// object would take its memory in a real host). A control that still held the client's
// pointer would call the tombstone, which records it.
#include "curvectl/client.h"
#include "curvectl/version.h"
#include "host/hold.h"
#include "module/module_support.h"

#include <doctest/doctest.h>

#include <new>
#include <string>
#include <vector>
#include <winver.h>

using moduletest::Plugin;

namespace {

/// What the client objects of a test were asked, in order; outlives them.
struct CallLog {
    std::vector<std::string> calls;
    int count(const std::string& prefix) const {
        int n = 0;
        for (const std::string& c : calls)
            n += c.rfind(prefix, 0) == 0 ? 1 : 0;
        return n;
    }
};

/// A client plug-in's object: holds its control as reference 0 and registers itself
/// through a ClientRegistration, as the guide says.
class TestClient : public ReferenceTarget, public ICurveCtlClient {
public:
    explicit TestClient(CallLog& log) : log_(log) {}
    ~TestClient() override { DeleteAllRefsFromMe(); }

    ICurveCtl* control() const { return control_; }
    const curvectl::ClientRegistration& registration() const { return registration_; }

    void* GetInterface(ULONG id) override {
        if (id == CURVE_CLIENT_INTERFACE_ID)
            return static_cast<ICurveCtlClient*>(this);
        return ReferenceTarget::GetInterface(id);
    }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? control_ : nullptr; }

    BOOL GetCurveButtonImages(HIMAGELIST*, ICurveCtl*) override {
        log_.calls.push_back("images");
        return FALSE;
    }
    BOOL GetCurveButtonText(int i, CStr&, ICurveCtl*) override {
        log_.calls.push_back("text " + std::to_string(i));
        return FALSE;
    }
    void ResetCurve(int i, ICurveCtl*) override {
        log_.calls.push_back("reset " + std::to_string(i));
    }
    void NewCurveCreated(int i, ICurveCtl*) override {
        log_.calls.push_back("new " + std::to_string(i));
    }

protected:
    void SetReference(int i, RefTargetHandle target) override {
        if (i != 0)
            return;
        control_ = curvectl::AsCurveControl(target);
        registration_.Attach(control_);
    }

private:
    CallLog& log_;
    ICurveCtl* control_ = nullptr; // reference 0
    curvectl::ClientRegistration registration_{this};
};

/// What takes a dead client's place: every interface query is recorded.
class Tombstone : public ReferenceTarget {
public:
    explicit Tombstone(CallLog& log) : log_(log) {}
    void* GetInterface(ULONG) override {
        log_.calls.push_back("tombstone asked");
        return nullptr;
    }

private:
    CallLog& log_;
};

/// Storage for one TestClient whose death the test controls; afterwards a Tombstone
/// lives there.
class ClientSlot {
public:
    explicit ClientSlot(CallLog& log) : log_(log) { client_ = ::new (storage_) TestClient(log); }
    ~ClientSlot() {
        if (client_)
            client_->~TestClient();
        if (tombstone_)
            tombstone_->~Tombstone();
    }
    ClientSlot(const ClientSlot&) = delete;
    ClientSlot& operator=(const ClientSlot&) = delete;

    TestClient* client() const { return client_; }
    /// Destroys the client and puts a tombstone at its address.
    void Kill() {
        client_->~TestClient();
        client_ = nullptr;
        tombstone_ = ::new (storage_) Tombstone(log_);
    }

private:
    static_assert(sizeof(Tombstone) <= sizeof(TestClient), "the tombstone fits the client");
    CallLog& log_;
    alignas(TestClient) unsigned char storage_[sizeof(TestClient)];
    TestClient* client_ = nullptr;
    Tombstone* tombstone_ = nullptr;
};

/// A plain holder of one reference: keeps a control alive while the test needs it.
class Holder : public ReferenceMaker {
public:
    explicit Holder(ReferenceTarget* target) { ReplaceReference(0, target); }
    ~Holder() override { DeleteAllRefsFromMe(); }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? target_ : nullptr; }

protected:
    void SetReference(int i, RefTargetHandle t) override {
        if (i == 0)
            target_ = t;
    }

private:
    ReferenceTarget* target_ = nullptr;
};

/// The module's classes in the host's class directory while it lives.
class ModuleClasses {
public:
    ModuleClasses() {
        for (int i = 0; i < Plugin().LibNumberClasses(); ++i)
            ClassDirectory::Get().AddClass(Plugin().LibClassDesc(i));
    }
    ~ModuleClasses() {
        for (int i = 0; i < Plugin().LibNumberClasses(); ++i)
            ClassDirectory::Get().RemoveClass(Plugin().LibClassDesc(i));
    }
    ModuleClasses(const ModuleClasses&) = delete;
    ModuleClasses& operator=(const ModuleClasses&) = delete;
};

/// An object of another class that claims the curve control's ids in the directory.
class Impostor : public ReferenceTarget {
public:
    explicit Impostor(int& deleted) : deleted_(deleted) {}
    ~Impostor() override { ++deleted_; }
    Class_ID ClassID() override { return Class_ID(0x1234, 0x5678); }
    SClass_ID SuperClassID() override { return CURVE_CONTROL_SUPER_CLASS_ID; }

private:
    int& deleted_;
};

class ImpostorDesc : public ClassDesc {
public:
    int deleted = 0;
    int IsPublic() override { return 0; }
    void* Create(BOOL) override { return static_cast<ReferenceTarget*>(new Impostor(deleted)); }
    const char* ClassName() override { return "Impostor"; }
    SClass_ID SuperClassID() override { return CURVE_CONTROL_SUPER_CLASS_ID; }
    Class_ID ClassID() override { return CURVE_CONTROL_CLASS_ID; }
    const char* Category() override { return ""; }
};

} // namespace

TEST_CASE("client helper: CreateCurveControl finds the descriptor and makes a control") {
    theHold.Reset();
    Plugin();
    REQUIRE(ClassDirectory::Get().FindClass(CURVE_CONTROL_SUPER_CLASS_ID, CURVE_CONTROL_CLASS_ID) ==
            nullptr);
    CHECK(curvectl::CreateCurveControl() == nullptr); // the module's classes are not listed

    ModuleClasses classes;
    ICurveCtl* control = curvectl::CreateCurveControl();
    REQUIRE(control != nullptr);
    CHECK(control->ClassID() == CURVE_CONTROL_CLASS_ID);
    CHECK(control->GetCurveCount() == 0);
    control->SetCurveCount(2, FALSE);
    REQUIRE(control->GetCurve(1) != nullptr);
    Interval valid = FOREVER;
    CHECK(control->GetCurve(1)->ValueAt(0, 0.5f, valid, FALSE) == 0.0f);
    CHECK(curvectl::AsCurveControl(control) == control);
    CHECK(curvectl::AsCurveControl(control->GetCurve(0)) == nullptr);
    CHECK(curvectl::AsCurveControl(nullptr) == nullptr);
    control->DeleteThis();
}

TEST_CASE("client helper: an object of another class under the control's id is refused") {
    theHold.Reset();
    ImpostorDesc impostor;
    ClassDirectory::Get().AddClass(&impostor);
    CHECK(curvectl::CreateCurveControl() == nullptr);
    CHECK(impostor.deleted == 1); // made, found to be no control, deleted
    ClassDirectory::Get().RemoveClass(&impostor);
}

TEST_CASE("ClientRegistration: the control calls its client while it lives, never after") {
    theHold.Reset();
    ModuleClasses classes;
    CallLog log;
    ClientSlot slot(log);

    // Created in a held step: its undo record keeps the control alive after the client.
    theHold.Begin();
    slot.client()->ReplaceReference(0, curvectl::CreateCurveControl());
    theHold.Accept("Create");
    ICurveCtl* control = slot.client()->control();
    REQUIRE(control != nullptr);
    CHECK(slot.client()->registration().Control() == control);
    control->SetCurveCount(2, FALSE);
    CHECK(log.count("new ") == 2);
    BitArray shown(2);
    shown.SetAll();
    control->SetShownCurves(shown);
    control->ResetSelectedCurves();
    CHECK(log.count("reset ") == 2);

    // The editor's curve buttons ask the client for their texts.
    control->SetControlFlags(CC_DEFAULT_FLAGS);
    REQUIRE(control->SetEditorOpen(TRUE));
    control->SetEditorOpen(FALSE);
    CHECK(log.count("text ") >= 2);

    slot.Kill();
    log.calls.clear();

    // The control outlives its client (the undo record pins it); nothing reaches the
    // client's memory any more.
    control->SetCurveCount(4, FALSE);
    control->ResetSelectedCurves();
    control->SetControlFlags(CC_DEFAULT_FLAGS);
    REQUIRE(control->SetEditorOpen(TRUE));
    control->SetEditorOpen(FALSE);
    CHECK(control->GetCurveCount() == 4);
    CHECK(log.calls.empty());
    // Undoing the creation finds the client's record forgotten; still no call.
    theHold.Undo();
    control->SetCurveCount(5, FALSE);
    CHECK(log.calls.empty());
    theHold.Reset(); // the last record goes, and the orphaned control with it
}

TEST_CASE("ClientRegistration: a registration that goes unregisters its client") {
    theHold.Reset();
    ModuleClasses classes;
    CallLog log;
    TestClient client(log); // registers through its own registration only when it holds a
                            // control; here a second registration does the work
    ICurveCtl* control = curvectl::CreateCurveControl();
    REQUIRE(control != nullptr);
    Holder holder(control); // keeps the control alive after the registration
    {
        curvectl::ClientRegistration registration(&client);
        registration.Attach(control);
        CHECK(registration.Control() == control);
        CHECK(registration.Client() == &client);
        control->SetCurveCount(1, FALSE);
        CHECK(log.count("new ") == 1);
    }
    control->SetCurveCount(3, FALSE);
    CHECK(log.count("new ") == 1);
    CHECK(control->GetCurveCount() == 3);
}

TEST_CASE("ClientRegistration: the control stays while attached; a deleted one is let go") {
    theHold.Reset();
    ModuleClasses classes;
    CallLog log;
    TestClient client(log);
    curvectl::ClientRegistration registration(&client);

    SUBCASE("the client drops its reference first") {
        ICurveCtl* control = curvectl::CreateCurveControl();
        REQUIRE(control != nullptr);
        registration.Attach(control);
        {
            Holder owner(control); // the client's own reference, dropped before the end
        }
        // Without the registration's reference the control would be gone now.
        REQUIRE(registration.Control() == control);
        control->SetCurveCount(2, FALSE);
        CHECK(log.count("new ") == 2);
        registration.Attach(nullptr);
        CHECK(registration.Control() == nullptr);
    }

    SUBCASE("something deletes the control anyway") {
        ICurveCtl* control = curvectl::CreateCurveControl();
        REQUIRE(control != nullptr);
        registration.Attach(control);
        control->DeleteThis();
        CHECK(registration.Control() == nullptr);
        registration.Attach(nullptr); // touches nothing of the deleted control
    }
}

TEST_CASE("ClientRegistration: attaching another control unregisters from the first") {
    theHold.Reset();
    ModuleClasses classes;
    CallLog log;
    TestClient client(log);
    ICurveCtl* first = curvectl::CreateCurveControl();
    ICurveCtl* second = curvectl::CreateCurveControl();
    REQUIRE(first != nullptr);
    REQUIRE(second != nullptr);
    Holder keepFirst(first);
    Holder keepSecond(second);

    curvectl::ClientRegistration registration(&client);
    registration.Attach(first);
    registration.Attach(second);
    first->SetCurveCount(2, FALSE);
    CHECK(log.count("new ") == 0);
    second->SetCurveCount(2, FALSE);
    CHECK(log.count("new ") == 2);
    registration.Attach(second); // again: still registered, once
    second->SetCurveCount(3, FALSE);
    CHECK(log.count("new ") == 3);
}

TEST_CASE("ClientRegistration: undo and redo of the client's control move the registration") {
    theHold.Reset();
    ModuleClasses classes;
    CallLog log;
    TestClient client(log);

    theHold.Begin();
    client.ReplaceReference(0, curvectl::CreateCurveControl());
    theHold.Accept("First control");
    ICurveCtl* first = client.control();
    REQUIRE(first != nullptr);
    theHold.Begin();
    client.ReplaceReference(0, curvectl::CreateCurveControl());
    theHold.Accept("Second control");
    ICurveCtl* second = client.control();
    REQUIRE(second != nullptr);
    REQUIRE(second != first);
    CHECK(theHold.NumUndo() == 2);

    // The replaced control lives on in the undo record but no longer calls the client.
    first->SetCurveCount(1, FALSE);
    CHECK(log.count("new ") == 0);

    REQUIRE(theHold.Undo());
    CHECK(client.control() == first);
    CHECK(client.registration().Control() == first);
    second->SetCurveCount(1, FALSE);
    CHECK(log.count("new ") == 0);
    first->SetCurveCount(2, FALSE);
    CHECK(log.count("new ") == 1);

    REQUIRE(theHold.Redo());
    CHECK(client.control() == second);
    CHECK(client.registration().Control() == second);
    first->SetCurveCount(3, FALSE);
    CHECK(log.count("new ") == 1);
    second->SetCurveCount(2, FALSE);
    CHECK(log.count("new ") == 2);

    client.DeleteAllRefsFromMe();
    theHold.Reset();
}

TEST_CASE("the module's version resource is the SDK's version") {
    char path[MAX_PATH] = {};
    REQUIRE(GetModuleFileNameA(Plugin().handle, path, MAX_PATH) > 0);
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeA(path, &ignored);
    REQUIRE(size > 0);
    std::vector<char> info(size);
    REQUIRE(GetFileVersionInfoA(path, 0, size, info.data()));

    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    REQUIRE(VerQueryValueA(info.data(), "\\", reinterpret_cast<void**>(&fixed), &length));
    REQUIRE(fixed != nullptr);
    const DWORD ms = DWORD(CURVECTL_VERSION_MAJOR) << 16 | DWORD(CURVECTL_VERSION_MINOR);
    const DWORD ls = DWORD(CURVECTL_VERSION_PATCH) << 16;
    CHECK(fixed->dwFileVersionMS == ms);
    CHECK(fixed->dwFileVersionLS == ls);
    CHECK(fixed->dwProductVersionMS == ms);
    CHECK(fixed->dwProductVersionLS == ls);

    for (const char* name : {"FileVersion", "ProductVersion"}) {
        const std::string key = std::string("\\StringFileInfo\\040904b0\\") + name;
        char* text = nullptr;
        REQUIRE(VerQueryValueA(info.data(), key.c_str(), reinterpret_cast<void**>(&text), &length));
        REQUIRE(text != nullptr);
        CHECK(std::string(text) == CURVECTL_VERSION_STRING);
    }
    CHECK(std::string(CURVECTL_VERSION_STRING) == std::to_string(CURVECTL_VERSION_MAJOR) + "." +
                                                      std::to_string(CURVECTL_VERSION_MINOR) + "." +
                                                      std::to_string(CURVECTL_VERSION_PATCH));
}
