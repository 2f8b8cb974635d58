"""What a bundle's parts must be like, where there is no Mac to build one.

    bundle_tests.py INFORMATION_FOLDER ICONSET_PROGRAM PACKAGING_FOLDER
"""

import os
import pathlib
import plistlib
import struct
import subprocess
import sys
import tempfile
import unittest

INFORMATION, ICONSET, PACKAGING = sys.argv[1:4]


def information(name):
    return plistlib.loads((pathlib.Path(INFORMATION) / name).read_bytes())


class InfoPlist(unittest.TestCase):
    def setUp(self):
        self.info = information("WithoutFeed.plist")

    def test_the_program_lives_in_the_menu_bar_only_and_once(self):
        self.assertIs(self.info["LSUIElement"], True)
        self.assertIs(self.info["LSMultipleInstancesProhibited"], True)

    def test_it_says_what_it_is_and_from_which_system_on(self):
        self.assertEqual(self.info["CFBundleIdentifier"], "org.quillmere.Quillmere")
        self.assertEqual(self.info["CFBundleExecutable"], "Quillmere")
        self.assertEqual(self.info["CFBundlePackageType"], "APPL")
        self.assertRegex(self.info["CFBundleShortVersionString"], r"^\d+\.\d+\.\d+$")
        self.assertEqual(self.info["CFBundleVersion"], self.info["CFBundleShortVersionString"])
        self.assertRegex(self.info["LSMinimumSystemVersion"], r"^\d+\.\d+$")

    def test_without_a_feed_the_key_is_left_out(self):
        self.assertNotIn("QuillmereUpdateFeed", self.info)

    def test_the_feeds_address_is_kept_with_every_sign_in_it(self):
        self.assertEqual(information("WithFeed.plist"),
                         self.info | {"QuillmereUpdateFeed": "https://example.org/feed.json?a=<1>&b=2"})


class IconSet(unittest.TestCase):
    def test_every_picture_has_the_size_of_its_name(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([ICONSET, folder], check=True, env=os.environ | {"QT_QPA_PLATFORM": "offscreen"})
            sides = {}
            for picture in pathlib.Path(folder).iterdir():
                sides[picture.name] = struct.unpack(">II", picture.read_bytes()[16:24])
        expected = {}
        for points in (16, 32, 128, 256, 512):
            expected[f"icon_{points}x{points}.png"] = (points, points)
            expected[f"icon_{points}x{points}@2x.png"] = (2 * points, 2 * points)
        self.assertEqual(sides, expected)


class Scripts(unittest.TestCase):
    """The scripts on a Mac whose tools only write down what they are asked."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.log = self.folder / "log"
        tools = self.folder / "tools"
        tools.mkdir()
        for name in ("codesign", "ditto", "hdiutil", "macdeployqt", "xcrun"):
            tool = tools / name
            tool.write_text(f'#!/bin/sh\necho "{name} $*" >>"{self.log}"\n')
            tool.chmod(0o755)
        self.environment = {"PATH": f"{tools}:{os.environ['PATH']}", "TMPDIR": str(self.folder)}
        self.app = self.folder / "Quillmere.app"
        for part in ("MacOS/Quillmere", "PlugIns/feednetwork.so", "Frameworks/QtCore.framework/QtCore"):
            file = self.app / "Contents" / part
            file.parent.mkdir(parents=True)
            file.touch()

    def run_script(self, name, *arguments, **environment):
        command = [str(pathlib.Path(PACKAGING) / name), *map(str, arguments)]
        return subprocess.run(command, env=self.environment | environment, capture_output=True).returncode

    def lines(self):
        return self.log.read_text().splitlines() if self.log.exists() else []

    def test_without_an_identity_nothing_is_signed(self):
        self.assertNotEqual(self.run_script("sign.sh", self.app), 0)
        self.assertEqual(self.lines(), [])

    def test_what_is_inside_is_signed_before_the_application_all_for_the_hardened_runtime(self):
        self.assertEqual(self.run_script("sign.sh", self.app, QUILLMERE_SIGNING_IDENTITY="ID"), 0)
        lines = self.lines()
        self.assertTrue(lines[0].startswith("macdeployqt"))
        self.assertIn("feednetwork.so", lines[0])
        signed = [line.split()[-1] for line in lines if "--sign ID" in line]
        self.assertEqual([pathlib.Path(path).name for path in signed],
                         ["feednetwork.so", "QtCore.framework", "Quillmere.app"])
        self.assertTrue(all("--options runtime" in line for line in lines if "--sign ID" in line))
        self.assertTrue(lines[-1].startswith("codesign --verify"))

    def test_with_a_profile_it_is_notarised_and_the_ticket_attached(self):
        self.assertEqual(self.run_script("sign.sh", self.app, QUILLMERE_SIGNING_IDENTITY="ID",
                                         QUILLMERE_NOTARY_PROFILE="P"), 0)
        self.assertIn("notarytool submit", self.lines()[-2])
        self.assertIn("--keychain-profile P --wait", self.lines()[-2])
        self.assertEqual(self.lines()[-1], f"xcrun stapler staple {self.app}")

    def test_the_image_is_made_without_an_identity_too(self):
        image = self.folder / "Quillmere.dmg"
        self.assertEqual(self.run_script("image.sh", self.app, image), 0)
        self.assertEqual(len(self.lines()), 1)
        self.assertTrue(self.lines()[0].startswith("hdiutil create -volname Quillmere"))
        self.assertTrue(self.lines()[0].endswith(str(image)))

    def test_no_application_is_an_error(self):
        self.assertNotEqual(self.run_script("image.sh", self.folder, self.folder / "x.dmg"), 0)
        self.assertNotEqual(self.run_script("sign.sh", self.folder, QUILLMERE_SIGNING_IDENTITY="ID"), 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
