#include "core/ClassTable.h"

#include <qv/io/AlphaNumInputStream.h>
#include <qv/io/AlphaNumOutputStream.h>
#include <qv/io/BitInputStream.h>
#include <qv/io/BitOutputStream.h>
#include <qv/io/BufferedInputStream.h>
#include <qv/io/BufferedOutputStream.h>
#include <qv/io/BufferedReader.h>
#include <qv/io/BufferedWriter.h>
#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/ByteBuffer.h>
#include <qv/io/ByteBufferInputStream.h>
#include <qv/io/ByteBufferOutputStream.h>
#include <qv/io/CharArrayWriter.h>
#include <qv/io/DataInputStream.h>
#include <qv/io/DataOutputStream.h>
#include <qv/io/FileChannel.h>
#include <qv/io/FileInputStream.h>
#include <qv/io/FileOutputStream.h>
#include <qv/io/FileReader.h>
#include <qv/io/FileWriter.h>
#include <qv/io/FilterInputStream.h>
#include <qv/io/FilterOutputStream.h>
#include <qv/io/InputStream.h>
#include <qv/io/InputStreamReader.h>
#include <qv/io/IoException.h>
#include <qv/io/MaskedConsoleInputStream.h>
#include <qv/io/NullOutputStream.h>
#include <qv/io/NullWriter.h>
#include <qv/io/OutputStream.h>
#include <qv/io/OutputStreamWriter.h>
#include <qv/io/PrintWriter.h>
#include <qv/io/Reader.h>
#include <qv/io/RotatingFileWriter.h>
#include <qv/io/StdioInputStream.h>
#include <qv/io/StdioOutputStream.h>
#include <qv/io/StringReader.h>
#include <qv/io/StringWriter.h>
#include <qv/io/Writer.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_ioClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(io::AlphaNumInputStream),
    QV_CLASS_ROW_NO_CREATOR(io::AlphaNumOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::BitInputStream),
    QV_CLASS_ROW_NO_CREATOR(io::BitOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::BufferedInputStream),
    QV_CLASS_ROW_NO_CREATOR(io::BufferedOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::BufferedReader),
    QV_CLASS_ROW_NO_CREATOR(io::BufferedWriter),
    QV_CLASS_ROW_NO_CREATOR(io::ByteArrayInputStream),
    QV_CLASS_ROW(io::ByteArrayOutputStream),
    QV_CLASS_ROW(io::ByteBuffer),
    QV_CLASS_ROW(io::ByteBufferInputStream),
    QV_CLASS_ROW(io::ByteBufferOutputStream),
    QV_CLASS_ROW(io::CharArrayWriter),
    QV_CLASS_ROW_NO_CREATOR(io::DataInputStream),
    QV_CLASS_ROW_NO_CREATOR(io::DataOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::FileChannel),
    QV_CLASS_ROW_NO_CREATOR(io::FileInputStream),
    QV_CLASS_ROW_NO_CREATOR(io::FileLock),
    QV_CLASS_ROW_NO_CREATOR(io::FileOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::FileReader),
    QV_CLASS_ROW_NO_CREATOR(io::FileWriter),
    QV_CLASS_ROW_NO_CREATOR(io::FilterInputStream),
    QV_CLASS_ROW_NO_CREATOR(io::FilterOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::InputStream),
    QV_CLASS_ROW_NO_CREATOR(io::InputStreamReader),
    QV_CLASS_ROW(io::IoException),
    QV_CLASS_ROW(io::MaskedConsoleInputStream),
    QV_CLASS_ROW(io::NullOutputStream),
    QV_CLASS_ROW(io::NullWriter),
    QV_CLASS_ROW_NO_CREATOR(io::OutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::OutputStreamWriter),
    QV_CLASS_ROW_NO_CREATOR(io::PrintWriter),
    QV_CLASS_ROW_NO_CREATOR(io::Reader),
    QV_CLASS_ROW_NO_CREATOR(io::RotatingFileWriter),
    QV_CLASS_ROW(io::StdioInputStream),
    QV_CLASS_ROW(io::StdioOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::StringReader),
    QV_CLASS_ROW(io::StringWriter),
    QV_CLASS_ROW(io::TimeoutException),
    QV_CLASS_ROW(io::UnexpectedEOFException),
    QV_CLASS_ROW_NO_CREATOR(io::Writer),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
