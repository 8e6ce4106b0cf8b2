# SPDX-License-Identifier: MIT
# vok.spdx.json: what is in the libraries and the program, as a bill of materials in the form SPDX 2.3. Versions are
# those that this build uses.

# number VARIABLE FILE PATTERN...: the numbers behind each pattern in a header, with dots between them.
function(number variable file)
  set(parts)
  foreach(pattern IN LISTS ARGN)
    file(STRINGS ${file} line LIMIT_COUNT 1 REGEX "${pattern}[ \t]+\"?[0-9]")
    string(REGEX REPLACE ".*${pattern}[ \t]+\"?([0-9.]+).*" "\\1" part "${line}")
    list(APPEND parts ${part})
  endforeach()
  list(JOIN parts . parts)
  set(${variable} ${parts} PARENT_SCOPE)
endfunction()

set(packages)
set(relations)
# material NAME VERSION LICENSE PARENT...: what is part of each parent.
function(material name version license)
  list(APPEND packages "{\"SPDXID\": \"SPDXRef-${name}\", \"name\": \"${name}\", \"versionInfo\": \"${version}\",
     \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false, \"copyrightText\": \"NOASSERTION\",
     \"licenseConcluded\": \"${license}\", \"licenseDeclared\": \"${license}\",
     \"externalRefs\": [{\"referenceCategory\": \"PACKAGE-MANAGER\", \"referenceType\": \"purl\",
                       \"referenceLocator\": \"pkg:generic/${name}@${version}\"}]}")
  foreach(parent IN LISTS ARGN)
    list(APPEND relations "{\"spdxElementId\": \"SPDXRef-${parent}\", \"relationshipType\": \"DEPENDS_ON\",
     \"relatedSpdxElement\": \"SPDXRef-${name}\"}")
  endforeach()
  set(packages "${packages}" PARENT_SCOPE)
  set(relations "${relations}" PARENT_SCOPE)
endfunction()

number(xxhash ${XXHASH_INCLUDE_DIR}/xxhash.h
       "define XXH_VERSION_MAJOR" "define XXH_VERSION_MINOR" "define XXH_VERSION_RELEASE")
number(rapidjson ${RAPIDJSON_INCLUDE_DIR}/rapidjson/rapidjson.h "define RAPIDJSON_MAJOR_VERSION"
       "define RAPIDJSON_MINOR_VERSION" "define RAPIDJSON_PATCH_VERSION")
material(libvok ${PROJECT_VERSION} MIT)
material(zlib ${ZLIB_VERSION_STRING} Zlib libvok)
material(xxhash ${xxhash} BSD-2-Clause libvok)
material(rapidjson ${rapidjson} MIT libvok)
# What the tables of vok/char are made of: nothing that is looked for when the library is built.
file(STRINGS ${PROJECT_SOURCE_DIR}/vok/char/char.h unicode REGEX "UNICODE_VERSION = ")
string(REGEX REPLACE ".*\"([0-9.]+)\".*" "\\1" unicode "${unicode}")
material(unicode-data ${unicode} Unicode-DFS-2016)
list(APPEND relations "{\"spdxElementId\": \"SPDXRef-unicode-data\", \"relationshipType\": \"CONTAINED_BY\",
     \"relatedSpdxElement\": \"SPDXRef-libvok\"}")
if(VOK_PROGRAM)
  number(gcrypt ${GCRYPT_INCLUDE_DIR}/gcrypt.h "define GCRYPT_VERSION")
  material(vok ${PROJECT_VERSION} MIT)
  list(APPEND relations "{\"spdxElementId\": \"SPDXRef-vok\", \"relationshipType\": \"DEPENDS_ON\",
     \"relatedSpdxElement\": \"SPDXRef-libvok\"}")
  material(cli11 ${CLI11_VERSION} BSD-3-Clause vok)
  material(libgcrypt ${gcrypt} LGPL-2.1-or-later vok)
endif()
list(JOIN packages ",\n    " packages)
list(JOIN relations ",\n    " relations)
string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC)  # that of SOURCE_DATE_EPOCH where it is set
file(WRITE ${PROJECT_BINARY_DIR}/vok.spdx.json "{
  \"spdxVersion\": \"SPDX-2.3\",
  \"dataLicense\": \"CC0-1.0\",
  \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"vok-${PROJECT_VERSION}\",
  \"documentNamespace\": \"urn:vok:sbom:${PROJECT_VERSION}\",
  \"creationInfo\": {\"created\": \"${created}\", \"creators\": [\"Organization: the vok authors\"]},
  \"documentDescribes\": [\"SPDXRef-libvok\"],
  \"packages\": [
    ${packages}
  ],
  \"relationships\": [
    ${relations}
  ]
}
")
