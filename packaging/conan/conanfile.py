# SPDX-License-Identifier: MIT
from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class Vok(ConanFile):
    name = 'vok'
    version = '2.1.143'
    license = 'MIT'
    description = 'Self-describing object trees: XML, JSON and DGraph documents'
    settings = 'os', 'arch', 'compiler', 'build_type'
    options = {'fPIC': [True, False], 'tool': [True, False]}
    default_options = {'fPIC': True, 'tool': False}
    exports_sources = ('CMakeLists.txt', 'LICENSE', 'cmake/*', 'vok/*', 'c/*', 'serializer/*', 'tools/*', 'packaging/*')

    def requirements(self):
        self.requires('rapidjson/[>=1.1]')
        self.requires('xxhash/[>=0.8]')
        self.requires('zlib/[>=1.2.11]')
        if self.options.tool:
            self.requires('cli11/[>=2.1]')
            self.requires('libgcrypt/[>=1.8]')

    def layout(self):
        cmake_layout(self, src_folder='../..')

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables.update(VOK_PROGRAM=bool(self.options.tool), VOK_INSTALL=True, VOK_TESTS=False,
                                         VOK_DOTNET=False, VOK_PYTHON=False, VOK_SHARED=False)
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        copy(self, 'LICENSE', self.source_folder, self.package_folder + '/licenses')
        CMake(self).install()

    def package_info(self):
        self.cpp_info.set_property('cmake_find_mode', 'none')  # the package has its own
        self.cpp_info.builddirs = ['lib/cmake/vok']
