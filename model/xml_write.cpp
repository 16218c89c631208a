#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include <memory>
#include <new>

#include "model/listed_object.h"
#include "model/text.h"
#include "model/xml.h"
#include "model/xml_memory.h"

namespace QtSts {
namespace {

const xmlChar* Xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

bool WriteFields(const ListedObject& object, xmlNode* node, std::string* text);

// One attribute. The value goes in as it is: libxml2 escapes it when the tree is saved.
bool WriteScalar(const ListedField& field, xmlNode* node, std::string* text) {
  text->clear();
  field.Format(text);
  CleanText(text);
  return xmlNewProp(node, Xml(field.Listed().Name), Xml(text->c_str())) != nullptr;
}

// A child element with the fields of `object`.
bool WriteObject(const char* name, const ListedObject& object, xmlNode* node, std::string* text) {
  xmlNode* const child = xmlNewChild(node, nullptr, Xml(name), nullptr);
  return child != nullptr && WriteFields(object, child, text);
}

bool WriteList(const ListedField& field, xmlNode* node, std::string* text) {
  xmlNode* const list = xmlNewChild(node, nullptr, Xml(field.Listed().Name), nullptr);
  return list != nullptr && field.VisitElements([=](const ListedObject& element) {
    return WriteObject(element.Class()->Name, element, list, text);
  });
}

// `text` is room for one value, kept from field to field.
bool WriteFields(const ListedObject& object, xmlNode* node, std::string* text) {
  return object.VisitFields([=](const ListedField& field) {
    if (!field.IsReported()) {
      return true;
    }
    if (field.Listed().Scalar != nullptr) {
      return WriteScalar(field, node, text);
    }
    return field.Listed().Elements != nullptr
               ? WriteList(field, node, text)
               : WriteObject(field.Listed().Name, field.Record(), node, text);
  });
}

}  // namespace

bool CListedStatus::Write(_xmlNode* node) {
  const XmlMemoryWatch memory;
  const ListedObject object(*this);
  std::string text;
  return node != nullptr && object.Class() != nullptr && WriteFields(object, node, &text) &&
         !memory.RanOut();
}

std::string WriteDocument(const CStatus& status) {
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
  const bool written = save != nullptr && !memory.RanOut() &&
                       const_cast<CStatus&>(status).Write(root) &&
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

// For programs that were built when it took a document that may change.
STATUS_API std::string WriteDocument(CStatus& status);
std::string WriteDocument(CStatus& status) {
  return WriteDocument(static_cast<const CStatus&>(status));
}

}  // namespace QtSts
