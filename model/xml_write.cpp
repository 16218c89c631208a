#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include <memory>
#include <new>

#include "model/xml.h"
#include "model/xml_memory.h"

namespace QtSts {
namespace {

const xmlChar* Xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

bool WriteFields(const ClassInfo& info, void* object, xmlNode* node, std::string* text);

// One attribute. The value goes in as it is: libxml2 escapes it when the tree is saved.
bool WriteScalar(const Field& field, const void* value, xmlNode* node, std::string* text) {
  text->clear();
  field.Scalar->Format(value, text);
  CleanText(text);
  return xmlNewProp(node, Xml(field.Name), Xml(text->c_str())) != nullptr;
}

bool WriteList(const Field& field, const void* list, xmlNode* node, std::string* text) {
  xmlNode* const parent = xmlNewChild(node, nullptr, Xml(field.Name), nullptr);
  if (parent == nullptr) {
    return false;
  }
  const std::size_t count = field.Elements->Count(list);
  for (std::size_t position = 0; position < count; ++position) {
    CBaseStatus* const element = field.Elements->At(list, position);
    const ClassInfo* const info = element == nullptr ? nullptr : ClassOf(*element);
    if (info == nullptr) {
      continue;
    }
    xmlNode* const child = xmlNewChild(parent, nullptr, Xml(info->Name), nullptr);
    if (child == nullptr || !WriteFields(*info, dynamic_cast<void*>(element), child, text)) {
      return false;
    }
  }
  return true;
}

bool WriteRecord(const Field& field, const void* record, xmlNode* node, std::string* text) {
  xmlNode* const child = xmlNewChild(node, nullptr, Xml(field.Name), nullptr);
  return child != nullptr && WriteFields(*field.Record, const_cast<void*>(record), child, text);
}

// `text` is room for one value, kept from field to field.
bool WriteFields(const ClassInfo& info, void* object, xmlNode* node, std::string* text) {
  if (info.Base != nullptr && !WriteFields(*info.Base, info.ToBase(object), node, text)) {
    return false;
  }
  for (std::size_t i = 0; i < info.FieldCount; ++i) {
    const Field& field = info.Fields[i];
    const void* const value = field.Read(object);
    if (value == nullptr) {
      continue;
    }
    const auto write = field.Scalar != nullptr     ? &WriteScalar
                       : field.Elements != nullptr ? &WriteList
                                                   : &WriteRecord;
    if (!write(field, value, node, text)) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool CListedStatus::Write(_xmlNode* node) {
  const XmlMemoryWatch memory;
  const ClassInfo* const info = ClassOf(*this);
  std::string text;
  return node != nullptr && info != nullptr &&
         WriteFields(*info, dynamic_cast<void*>(this), node, &text) && !memory.RanOut();
}

std::string WriteDocument(CStatus& status) {
  struct FreeBuffer {
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
  };
  struct FreeDocument {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  };
  struct CloseSave {
    void operator()(xmlSaveCtxt* save) const { xmlSaveClose(save); }
  };
  const XmlMemoryWatch memory;
  const std::unique_ptr<xmlDoc, FreeDocument> document(xmlNewDoc(Xml("1.0")));
  const std::unique_ptr<xmlBuffer, FreeBuffer> buffer(xmlBufferCreate());
  xmlNode* const root = document == nullptr ? nullptr
                                            : xmlNewDocNode(document.get(), nullptr,
                                                            Xml(CStatus::Class.Name), nullptr);
  if (root == nullptr || buffer == nullptr || memory.RanOut()) {
    xmlFreeNode(root);
    throw std::bad_alloc();
  }
  xmlDocSetRootElement(document.get(), root);
  std::unique_ptr<xmlSaveCtxt, CloseSave> save(
      xmlSaveToBuffer(buffer.get(), "UTF-8", XML_SAVE_FORMAT));
  const bool written = save != nullptr && !memory.RanOut() && status.Write(root) &&
                       xmlSaveDoc(save.get(), document.get()) >= 0;
  const bool closed = save != nullptr && xmlSaveClose(save.release()) >= 0;
  if (!written || !closed || memory.RanOut()) {
    throw std::bad_alloc();
  }
  std::string text(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
                   static_cast<std::size_t>(xmlBufferLength(buffer.get())));
  EscapeSteering(&text, "&#x", ";");  // names hold no such characters, only values do
  return text;
}

}  // namespace QtSts
