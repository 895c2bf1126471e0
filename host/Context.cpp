// The execution context and the three services of the reference host.
#include <algorithm>
#include <exception>

#include "zet/ZetHost.h"

namespace zet::host {

void CNotifyRecorder::ReportError(int level, const CStdStr& source, const CStdStr& text) {
  reports.push_back({level, source, text});
}

void CNotifyRecorder::PostEvent(int code, int value) { events.push_back({code, value}); }

CNamedStore::~CNamedStore() {
  for (auto& [name, block] : m_blocks) delete[] block.first;
}

void* CNamedStore::Find(const char* name) {
  auto it = m_blocks.find(name ? name : "");
  return it == m_blocks.end() ? nullptr : it->second.first;
}

bool CNamedStore::Add(const char* name, void* block, unsigned size) {
  auto [it, inserted] = m_blocks.try_emplace(name ? name : "", static_cast<uint8_t*>(block), size);
  // The store owns what it is given, even a duplicate it does not keep.
  if (!inserted) delete[] static_cast<uint8_t*>(block);
  return inserted;
}

namespace {

CZetObject Label(const char* label) {
  CZetObject o;
  if (label) o = label;
  return o;
}

template <class T>
CZetObject Value(const T& v) {
  CZetObject o;
  o = v;
  return o;
}

}  // namespace

SAnnotationRecord& CAnnotationRecorder::New(const char* op, int t1, int t2) {
  SAnnotationRecord& r = records.emplace_back();
  r.op = op;
  r.trailing[0] = t1;
  r.trailing[1] = t2;
  return r;
}

void CAnnotationRecorder::AddPoint(const char* label, const CZetPoint& pt, int color, int t1,
                                   int t2) {
  New("AddPoint", t1, t2).fields = {
      {"label", Label(label)}, {"point", Value(pt)}, {"color", Value(color)}};
}

void CAnnotationRecorder::AddSegment(const char* label, const CZetPoint& start,
                                     const CZetPoint& end, int color, int t1, int t2) {
  New("AddSegment", t1, t2).fields = {{"label", Label(label)},
                                      {"start", Value(start)},
                                      {"end", Value(end)},
                                      {"color", Value(color)}};
}

void CAnnotationRecorder::AddLine(const char* label, const CZetLine& line, int color, int t1,
                                  int t2) {
  New("AddLine", t1, t2).fields = {
      {"label", Label(label)}, {"line", Value(line)}, {"color", Value(color)}};
}

void CAnnotationRecorder::AddCircle(const char* label, const CZetCircle& circle, int color,
                                    bool fill, int t1, int t2) {
  New("AddCircle", t1, t2).fields = {{"label", Label(label)},
                                     {"circle", Value(circle)},
                                     {"color", Value(color)},
                                     {"fill", Value(fill)}};
}

void CAnnotationRecorder::AddCircles(const char* label, const CZetPointVector& centres,
                                     double radius, int color, bool fill, int t1, int t2) {
  New("AddCircles", t1, t2).fields = {{"label", Label(label)},
                                      {"points", Value(centres)},
                                      {"radius", Value(radius)},
                                      {"color", Value(color)},
                                      {"fill", Value(fill)}};
}

void CAnnotationRecorder::AddRect(const char* label, const CZetRect& rect, int color, bool fill,
                                  int t1, int t2) {
  New("AddRect", t1, t2).fields = {{"label", Label(label)},
                                   {"rect", Value(rect)},
                                   {"color", Value(color)},
                                   {"fill", Value(fill)}};
}

void CAnnotationRecorder::AddPoints(const char* label, const CZetPointVector& points, int color,
                                    int t1, int t2) {
  New("AddPoints", t1, t2).fields = {
      {"label", Label(label)}, {"points", Value(points)}, {"color", Value(color)}};
}

void CAnnotationRecorder::AddText(const CZetPoint& where, const char* label, const char* font,
                                  int color, bool background, int t1, int t2) {
  New("AddText", t1, t2).fields = {{"point", Value(where)},
                                   {"label", Label(label)},
                                   {"font", Label(font)},
                                   {"color", Value(color)},
                                   {"background", Value(background)}};
}

void CAnnotationRecorder::AddPolyline(const char* label, const CZetPointVector& points, int color,
                                      int t1, int t2) {
  New("AddPolyline", t1, t2).fields = {
      {"label", Label(label)}, {"points", Value(points)}, {"color", Value(color)}};
}

void CAnnotationRecorder::AddPixels(const char* label, const CZetPointVector& points, int color,
                                    int t1, int t2) {
  New("AddPixels", t1, t2).fields = {
      {"label", Label(label)}, {"points", Value(points)}, {"color", Value(color)}};
}

void CZetExecContext::Resize(int params, int inputs, int inputCount, int outputs) {
  auto size = [](std::vector<CZetObject>& values, std::vector<CZetObject*>& ptrs, int n) {
    n = std::max(n, 0);
    values.resize(static_cast<size_t>(n));
    ptrs.resize(values.size());
    for (size_t i = 0; i < values.size(); ++i) ptrs[i] = &values[i];
  };
  size(m_params, m_paramPtrs, params);
  size(m_inputs, m_inputPtrs, std::max(inputs, inputCount));
  size(m_outputs, m_outputPtrs, outputs);
  m_inputCount = std::max(inputCount, 0);
}

void CZetExecContext::Reset(const SInstrInfo& info, int inputCount) {
  const int declared = static_cast<int>(info.inputs.size());
  if (inputCount < 0) inputCount = declared;
  Resize(static_cast<int>(info.params.size()), declared, inputCount,
         static_cast<int>(info.outputs.size()));
  for (size_t i = 0; i < info.params.size(); ++i) m_params[i] = info.params[i].value;
  for (size_t i = 0; i < m_inputs.size(); ++i) {
    if (i < info.inputs.size())
      m_inputs[i] = info.inputs[i].defaultValue;
    else
      m_inputs[i].Clear();
  }
  for (CZetObject& o : m_outputs) o.Clear();
  ClearRecords();
}

void CZetExecContext::ClearRecords() {
  m_notify.reports.clear();
  m_notify.events.clear();
  m_annotations.records.clear();
  m_hints.clear();
}

SExecResult CZetExecContext::Run(IXInstrPlugin* instr) {
  SExecResult r;
  try {
    r.status = instr->Execute(this);
  } catch (const std::exception& e) {
    r.threw = true;
    r.exception = e.what();
  } catch (...) {
    r.threw = true;
    r.exception = "unknown exception";
  }
  return r;
}

void CZetExecContext::SetOutputHint(int outputIndex, int value) {
  m_hints.emplace_back(outputIndex, value);
}

IXInstrService* CZetExecContext::GetService(int id) {
  switch (id) {
    case kServiceNotify: return &m_notify;
    case kServiceStore: return &m_store;
    case kServiceAnnotations: return &m_annotations;
    default: return nullptr;
  }
}

}  // namespace zet::host
