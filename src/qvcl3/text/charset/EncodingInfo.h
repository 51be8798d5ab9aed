#ifndef QVCL3_TEXT_CHARSET_ENCODINGINFO_H
#define QVCL3_TEXT_CHARSET_ENCODINGINFO_H

namespace qv::text::charset::detail {

// The table behind the QV...EncInfo functions: built at library start-up,
// freed at shut-down. Building again replaces it.
void buildEncodingInfo();
void freeEncodingInfo() noexcept;

} // namespace qv::text::charset::detail

#endif
