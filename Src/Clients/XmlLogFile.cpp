#include "Clients/XmlLogFile.h"

#include <fcntl.h>
#include <libxml/xmlIO.h>
#include <libxml/xmlsave.h>
#include <unistd.h>

#include <cerrno>

namespace Logger::Internal {

namespace {

/// Whether libxml2, too, takes the name for just this file. It has other ideas about URLs, escapes
/// and a lone hyphen, and may compress.
bool IsPlain(const std::string& fileName) {
  return fileName != "-" && fileName.find_first_of("%:") == std::string::npos &&
         xmlGetCompressMode() == 0;
}

int WriteToDescriptor(void* descriptor, const char* data, int size) {
  const auto& file = *static_cast<const FileDescriptor*>(descriptor);
  return file.Write(data, static_cast<std::size_t>(size)) ? size : -1;
}

/// Whether all of the text was written at the place, with one call.
bool WriteAt(int descriptor, std::string_view text, off_t position) {
  ssize_t written;
  do {
    written = pwrite(descriptor, text.data(), text.size(), position);
  } while (written < 0 && errno == EINTR);
  return written == static_cast<ssize_t>(text.size());
}

bool IsSameTime(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

}  // namespace

XmlLogFile::XmlLogFile(const std::string& fileName) : fileName_(fileName), written_() {}

XmlLogFile::~XmlLogFile() = default;

void XmlLogFile::Append(std::string_view entryAndEnd) {
  if (!WriteOverEnd(entryAndEnd)) Distrust();
}

void XmlLogFile::SaveIndented(xmlDoc& document) {
  descriptor_.Close();
  static_cast<void>(xmlSaveFormatFileEnc(fileName_.c_str(), &document, kEncoding, 1));
}

bool XmlLogFile::IsAsWritten() const {
  struct stat now;
  return descriptor_.IsOpen() && stat(fileName_.c_str(), &now) == 0 &&
         now.st_dev == written_.st_dev && now.st_ino == written_.st_ino &&
         now.st_size == written_.st_size && IsSameTime(now.st_mtim, written_.st_mtim) &&
         IsSameTime(now.st_ctim, written_.st_ctim);
}

/// Writes a text over the former end. When that fails, the file is left as it was.
bool XmlLogFile::WriteOverEnd(std::string_view text) {
  const off_t end = written_.st_size - static_cast<off_t>(kEnd.size());
  if (!WriteAt(descriptor_.Get(), text, end)) {
    // Nobody is told; what cannot be put back now is written anew with the next event.
    static_cast<void>(WriteAt(descriptor_.Get(), kEnd, end));
    static_cast<void>(ftruncate(descriptor_.Get(), written_.st_size) == 0);
    return false;
  }
  return fstat(descriptor_.Get(), &written_) == 0;
}

void XmlLogFile::SaveWhole(xmlDoc& document) {
  descriptor_.Close();
  if (!IsPlain(fileName_)) {
    static_cast<void>(xmlSaveFileEnc(fileName_.c_str(), &document, kEncoding));
    return;
  }
  if (!descriptor_.Open(fileName_, O_TRUNC)) return;
  xmlOutputBuffer* const buffer = xmlOutputBufferCreateIO(WriteToDescriptor, nullptr, &descriptor_,
                                                          xmlFindCharEncodingHandler(kEncoding));
  // The call closes the buffer in every case.
  const int size = buffer == nullptr ? -1 : xmlSaveFileTo(buffer, &document, kEncoding);
  const bool canGoOn = size > 0 && fstat(descriptor_.Get(), &written_) == 0 &&
                       S_ISREG(written_.st_mode) && written_.st_size == size;
  if (!canGoOn) descriptor_.Close();
}

}  // namespace Logger::Internal
