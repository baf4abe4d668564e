#pragma once

#include <libxml/globals.h>
#include <libxml/tree.h>

#include <string>

/// The document of an XML log, made and saved by libxml2's plain calls.
class PlainXmlLog {
 public:
  explicit PlainXmlLog(const std::string& stylesheet = "") : document_(xmlNewDoc(Chars("1.0"))) {
    if (!stylesheet.empty()) {
      const std::string content = "href=\"" + stylesheet + "\"";
      xmlAddChild(reinterpret_cast<xmlNode*>(document_),
                  xmlNewDocPI(document_, Chars("xml-stylesheet type=\"text/xsl\""),
                              Chars(content.c_str())));
    }
    xmlDocSetRootElement(document_, xmlNewNode(nullptr, Chars("apitestlog")));
  }
  ~PlainXmlLog() { xmlFreeDoc(document_); }
  PlainXmlLog(const PlainXmlLog&) = delete;
  PlainXmlLog& operator=(const PlainXmlLog&) = delete;

  /// Adds an entry. `newText` is xmlNewChild or xmlNewTextChild.
  void Add(const std::string& level, const std::string& date, const std::string& time,
           const std::string& log, decltype(&xmlNewChild) newText = xmlNewChild) {
    xmlNode* const root = xmlDocGetRootElement(document_);
    xmlNode* const entry = xmlNewChild(root, nullptr, Chars("entry"), nullptr);
    xmlNewProp(entry, Chars("level"), Chars(level.c_str()));
    newText(entry, nullptr, Chars("date"), Chars(date.c_str()));
    newText(entry, nullptr, Chars("time"), Chars(time.c_str()));
    newText(entry, nullptr, Chars("log"), Chars(log.c_str()));
  }

  void Save(const std::string& path) { xmlSaveFileEnc(path.c_str(), document_, "UTF-8"); }
  void SaveIndented(const std::string& path) {
    xmlSaveFormatFileEnc(path.c_str(), document_, "UTF-8", 1);
  }

 private:
  static const xmlChar* Chars(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

  xmlDoc* document_;
};
