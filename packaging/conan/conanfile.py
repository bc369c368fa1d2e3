"""Recipe for Conan 2. Not tried against Conan's registry: the address is a placeholder, see packaging/README.md."""

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, get, rmdir
import os


class ZavLogConan(ConanFile):
    name = "zav-log"
    description = "Logging library for C++ applications"
    license = "MIT AND BSD-2-Clause"
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "fPIC": [True, False]}
    default_options = {"shared": True, "fPIC": True, "boost/*:header_only": True}

    def config_options(self):
        if self.settings.os == "Windows":
            del self.options.fPIC

    def configure(self):
        if self.options.shared:
            self.options.rm_safe("fPIC")

    def layout(self):
        cmake_layout(self, src_folder="src")

    def requirements(self):
        # What a public header shows, and what is compiled in.
        self.requires("boost/[>=1.74]", transitive_headers=True)
        self.requires("fmt/[>=9]", transitive_headers=True)
        self.requires("xxhash/[>=0.8]")
        self.requires("zlib/[>=1.2]")

    def validate(self):
        if self.settings.os not in ("Linux", "Windows") or self.settings.compiler not in ("gcc", "clang"):
            raise ConanInvalidConfiguration("ZAV Log is built by gcc and clang, on Linux and for Windows by MinGW")

    def source(self):
        get(self, f"https://zav-log.invalid/zav-log-{self.version}.tar.gz", strip_root=True)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["ZAV_LOG_WITH_ICE"] = False
        toolchain.cache_variables["ZAV_LOG_SYSTEM_APPENDERS"] = "OFF"
        for part in ("EXAMPLES", "TESTS", "TOOLS"):
            toolchain.cache_variables[f"ZAV_LOG_BUILD_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        documents = os.path.join(self.package_folder, "share", "doc", "zav-log")
        copy(self, "LICENSE*", documents, os.path.join(self.package_folder, "licenses"))
        rmdir(self, os.path.join(self.package_folder, "share"))
        # Conan describes the package to CMake and pkg-config itself.
        for folder in ("cmake", "pkgconfig"):
            rmdir(self, os.path.join(self.package_folder, "lib", folder))

    def package_info(self):
        log = self.cpp_info.components["log"]
        log.set_property("cmake_target_name", "zav-log::zav-log")
        log.set_property("pkg_config_name", "zav-log")
        log.includedirs = [os.path.join("include", "zav-log")]
        log.libs = ["zav-log-dll"]
        log.requires = ["boost::headers", "fmt::fmt", "xxhash::xxhash", "zlib::zlib"]

        control = self.cpp_info.components["control"]
        control.set_property("cmake_target_name", "zav-log::control")
        control.set_property("pkg_config_name", "zav-log-control")
        control.includedirs = log.includedirs
        control.libs = ["zav-log-control"]
        control.requires = ["log"]

        if self.settings.os == "Linux":
            log.system_libs = ["pthread"]
            if not self.options.shared:
                # A plugin that the library is a part of must stay as long as its threads.
                log.sharedlinkflags = log.exelinkflags = ["-Wl,-z,nodelete"]
        elif not self.options.shared:
            log.defines = ["ZAV_LOG_STATIC"]
            log.system_libs = ["ws2_32"]
