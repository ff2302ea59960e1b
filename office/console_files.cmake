# cmake -DTARGET=console_files.cpp -DFOLDER=office/console -DFILES=index.html;… -P console_files.cmake
# Writes the console's files into one source, each as a raw text. The style goes into the page: a browser that has to
# fetch it first paints half as soon.

set(link "<link rel=\"stylesheet\" href=\"/console/console.css\">")
file(READ "${FOLDER}/console.css" style)

set(text "#include \"office/console_files.h\"\n\n#include <algorithm>\n#include <array>\n\n")
string(APPEND text "namespace zelkovanta::office {\nnamespace {\n\nconstexpr std::array files = {\n")
set(type_html "text/html; charset=utf-8")
set(type_css "text/css; charset=utf-8")
set(type_js "text/javascript; charset=utf-8")
set(type_svg "image/svg+xml")
foreach(name IN LISTS FILES)
  file(READ "${FOLDER}/${name}" content)
  get_filename_component(kind "${name}" LAST_EXT)
  string(SUBSTRING "${kind}" 1 -1 kind)
  set(path "/console/${name}")
  if(name STREQUAL "index.html")
    set(path "/")
    string(FIND "${content}" "${link}" place)
    if(place EQUAL -1)
      message(FATAL_ERROR "The page does not name its style as ${link}")
    endif()
    string(REPLACE "${link}" "<style>${style}</style>" content "${content}")
  endif()
  string(APPEND text "    ConsoleFile{\"${path}\", \"${type_${kind}}\", R\"~~~(${content})~~~\"},\n")
endforeach()
string(APPEND text "};\n\n}  // namespace\n\n"
  "std::span<const ConsoleFile> consoleFiles() {\n    return files;\n}\n\n"
  "std::string_view consoleStyle() {\n    return R\"~~~(${style})~~~\";\n}\n\n"
  "const ConsoleFile* consoleFileAt(std::string_view path) {\n"
  "    const auto* const found = std::ranges::find(files, path, &ConsoleFile::path);\n"
  "    return found == files.end() ? nullptr : found;\n}\n\n"
  "}  // namespace zelkovanta::office\n")
file(WRITE "${TARGET}" "${text}")
