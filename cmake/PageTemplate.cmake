# Writes OUTPUT, a source that holds the bytes of the file PAGE.
file(READ ${PAGE} bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
file(WRITE ${OUTPUT} "#include \"view/page_template.h\"

namespace host::view {
namespace {

constexpr unsigned char kPage[] = {${bytes}};

}  // namespace

std::string_view pageTemplate() {
  return {reinterpret_cast<const char*>(kPage), sizeof kPage};
}

}  // namespace host::view
")
