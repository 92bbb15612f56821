#include "tests/win/graph_test_support.h"

#include "host/offscreen.h"

namespace graphtest {

void LoadPoints(Curve& c, const std::vector<CurveKnot>& knots) {
    const DWORD flags = c.CurveFlags();
    c.SetPointCount(int(knots.size()));
    c.SetCurveFlags(flags);
    for (size_t i = 0; i < knots.size(); ++i)
        c.Knots()[i] = knots[i];
    c.InvalidateCache();
}

Canvas::Canvas(Kind kind) : dc_(CreateCompatibleDC(nullptr)) {
    if (kind == ScreenBitmap) {
        HDC screen = GetDC(nullptr);
        bitmap_ = CreateCompatibleBitmap(screen, kW, kH);
        ReleaseDC(nullptr, screen);
    } else {
        BITMAPINFO bi{};
        bi.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        bi.bmiHeader.biWidth = kW;
        bi.bmiHeader.biHeight = kind == TopDown ? -kH : kH;
        bi.bmiHeader.biPlanes = 1;
        bi.bmiHeader.biBitCount = 32;
        bi.bmiHeader.biCompression = BI_RGB;
        void* bits = nullptr;
        bitmap_ = CreateDIBSection(dc_, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
    }
    old_ = SelectObject(dc_, bitmap_);
    RECT all{0, 0, kW, kH};
    FillRect(dc_, &all, HBRUSH(GetStockObject(GRAY_BRUSH)));
}

Canvas::~Canvas() {
    SelectObject(dc_, old_);
    DeleteObject(bitmap_);
    DeleteDC(dc_);
}

std::vector<uint32_t> Canvas::Pixels() const {
    GdiFlush();
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    bi.bmiHeader.biWidth = kW;
    bi.bmiHeader.biHeight = -kH;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    bi.bmiHeader.biCompression = BI_RGB;
    std::vector<uint32_t> out(size_t(kW) * kH);
    // GetDIBits wants the bitmap out of the DC.
    SelectObject(dc_, old_);
    GetDIBits(dc_, bitmap_, 0, kH, out.data(), &bi, DIB_RGB_COLORS);
    SelectObject(dc_, bitmap_);
    return out;
}

int Canvas::Differences(const Canvas& other) const {
    const std::vector<uint32_t> a = Pixels(), b = other.Pixels();
    int n = 0;
    for (size_t i = 0; i < a.size(); ++i)
        n += a[i] != b[i];
    return n;
}

OpenEditor::OpenEditor(int curves, DWORD flags, int width, int height) : parent_(width, height) {
    edtest::ResetHostState();
    DoubleBuffering() = 1;
    control_ = edtest::MakeControl(curves, flags, parent_.get());
    control_->SetXRange(0.0f, 100.0f, FALSE);
    control_->SetYRange(-1000.0f, 1000.0f);
    control_->SetEditorOpen(TRUE);
    edtest::Pump();
}

OpenEditor::~OpenEditor() {
    control_.reset();
    edtest::Pump();
    edtest::ResetHostState();
}

void OpenEditor::SetView(float xs, float ys, int hpos, int vpos) {
    CurveCtlWindow& w = editor();
    w.Scale().xs = xs;
    w.Scale().ys = ys;
    SetScrollRange(hbar(), SB_CTL, -1000000, 1000000, FALSE);
    SetScrollPos(hbar(), SB_CTL, hpos, FALSE);
    SetScrollRange(vbar(), SB_CTL, -1000000, 1000000, FALSE);
    SetScrollPos(vbar(), SB_CTL, vpos, FALSE);
}

view::ViewMapping OpenEditor::View() {
    CurveCtlWindow& w = editor();
    view::ViewMapping m;
    m.usable = w.UsableArea();
    m.xs = w.Scale().xs;
    m.ys = w.Scale().ys;
    m.x0 = 2 * GetScrollPos(hbar(), SB_CTL) - 7;
    m.y0 = w.GetVerticalOffset(true);
    return m;
}

void OpenEditor::Repaint() {
    editor().RedrawGraph();
    edtest::Pump();
}

COLORREF OpenEditor::Pixel(int x, int y) {
    return GetPixel(editor().Graph().Buffer()->GetDC(), x, y);
}

// ---------------------------------------------------------------------------------------
// Metafile records

HDC BeginRecording() { return CreateEnhMetaFileA(nullptr, nullptr, nullptr, nullptr); }

HENHMETAFILE EndRecording(HDC hdc) { return CloseEnhMetaFile(hdc); }

std::vector<Record> DecodeMetafile(HENHMETAFILE emf) {
    std::vector<Record> out;
    const UINT size = GetEnhMetaFileBits(emf, 0, nullptr);
    std::vector<BYTE> bits(size);
    GetEnhMetaFileBits(emf, size, bits.data());
    size_t at = 0;
    while (at + sizeof(EMR) <= bits.size()) {
        const auto* rec = reinterpret_cast<const ENHMETARECORD*>(bits.data() + at);
        if (rec->nSize < sizeof(EMR))
            break;
        Record r;
        switch (rec->iType) {
        case EMR_MOVETOEX: {
            const auto* m = reinterpret_cast<const EMRMOVETOEX*>(rec);
            r.kind = Record::MoveTo;
            r.x = m->ptl.x;
            r.y = m->ptl.y;
            break;
        }
        case EMR_LINETO: {
            const auto* l = reinterpret_cast<const EMRLINETO*>(rec);
            r.kind = Record::LineTo;
            r.x = l->ptl.x;
            r.y = l->ptl.y;
            break;
        }
        case EMR_EXTTEXTOUTW: {
            const auto* t = reinterpret_cast<const EMREXTTEXTOUTW*>(rec);
            r.kind = Record::Text;
            r.x = t->emrtext.ptlReference.x;
            r.y = t->emrtext.ptlReference.y;
            const auto* w = reinterpret_cast<const WCHAR*>(reinterpret_cast<const BYTE*>(rec) +
                                                           t->emrtext.offString);
            for (DWORD i = 0; i < t->emrtext.nChars; ++i)
                r.text.push_back(char(w[i]));
            break;
        }
        case EMR_EXTTEXTOUTA: {
            const auto* t = reinterpret_cast<const EMREXTTEXTOUTA*>(rec);
            r.kind = Record::Text;
            r.x = t->emrtext.ptlReference.x;
            r.y = t->emrtext.ptlReference.y;
            const auto* c = reinterpret_cast<const char*>(rec) + t->emrtext.offString;
            r.text.assign(c, c + t->emrtext.nChars);
            break;
        }
        default:
            break;
        }
        out.push_back(r);
        at += rec->nSize;
    }
    return out;
}

std::vector<Record> Texts(const std::vector<Record>& records) {
    std::vector<Record> out;
    for (const Record& r : records)
        if (r.kind == Record::Text)
            out.push_back(r);
    return out;
}

std::vector<Line> Lines(const std::vector<Record>& records) {
    std::vector<Line> out;
    int x = 0, y = 0;
    for (const Record& r : records) {
        if (r.kind == Record::MoveTo) {
            x = r.x;
            y = r.y;
        } else if (r.kind == Record::LineTo) {
            out.push_back(Line{x, y, r.x, r.y});
            x = r.x;
            y = r.y;
        }
    }
    return out;
}

} // namespace graphtest
