#!/usr/bin/env python3
"""What the command line does to files that stand where it writes."""

import os
import stat
import subprocess
import time

from folder import BASELINE_HEAD, COX, LIFE, PATIENCE, TRIAL, Folder, run


class Files(Folder):
    def test_a_device_is_written_to_and_stays_a_device(self):
        device = "/dev/full"
        if os.geteuid() == 0:
            device = "full"  # the same device, where nothing depends on it
            try:
                os.mknod(self.folder / device, stat.S_IFCHR | 0o666, os.makedev(1, 7))
                os.close(os.open(self.folder / device, os.O_WRONLY))
            except OSError as error:
                self.skipTest(f"no device can be made here: {error}")
        result = self.run_it(*COX, "--baseline", device)
        self.refused(
            result,
            1,
            f"survmeth cox: {device}: cannot be written: No space left on device\n",
        )
        self.assertTrue(stat.S_ISCHR(os.stat(self.folder / device).st_mode))

    def test_a_fifo_is_written_to(self):
        os.mkfifo(self.folder / "fifo")
        process = self.start(*COX, "--baseline", "fifo")
        self.assertTrue(self.read_fifo("fifo", process).startswith(BASELINE_HEAD))
        self.assertEqual(process.wait(PATIENCE), 0)
        self.assertTrue(stat.S_ISFIFO(os.stat(self.folder / "fifo").st_mode))

    def test_a_process_substitution_is_written_to(self):
        script = '"$0" cox trial.csv --time t --event e --covariates x --baseline >(cat >copy; : >done)'
        result = subprocess.run(
            ["bash", "-c", script, self.program], cwd=self.folder, capture_output=True, text=True,
            timeout=PATIENCE, check=False,
        )
        self.assertEqual((result.stderr, result.returncode), ("", 0))
        end = time.monotonic() + PATIENCE
        while not (self.folder / "done").exists() and time.monotonic() < end:
            time.sleep(0.01)
        self.assertTrue(self.text("copy").startswith(BASELINE_HEAD))

    def test_dev_stdout_and_the_text_both_reach_standard_output(self):
        # Through a link, so that a program that replaces what it finds leaves the device alone.
        (self.folder / "printed").symlink_to("/dev/stdout")
        result = self.run_it(*COX, "--baseline", "printed")
        self.assertEqual((result.stderr, result.returncode), ("", 0))
        self.assertTrue(result.stdout.startswith(BASELINE_HEAD))
        text = self.run_it(*COX, "--baseline", "elsewhere.csv").stdout
        self.assertTrue(text.startswith("Proportional-hazards regression\n"))
        self.assertTrue(result.stdout.endswith(text))

    def test_a_link_stays_and_what_it_leads_to_is_replaced(self):
        (self.folder / "there").mkdir()
        (self.folder / "there" / "real.csv").write_text("old")
        (self.folder / "link.csv").symlink_to("there/real.csv")
        self.assertEqual(self.run_it(*COX, "--baseline", "link.csv").returncode, 0)
        self.assertTrue((self.folder / "link.csv").is_symlink())
        self.assertTrue(self.text("there/real.csv").startswith(BASELINE_HEAD))
        self.assertEqual(os.listdir(self.folder / "there"), ["real.csv"])

    def test_a_link_to_nothing_yet_stays_and_gets_its_file(self):
        (self.folder / "link.csv").symlink_to("later.csv")
        self.assertEqual(self.run_it(*COX, "--baseline", "link.csv").returncode, 0)
        self.assertTrue((self.folder / "link.csv").is_symlink())
        self.assertTrue(self.text("later.csv").startswith(BASELINE_HEAD))

    def test_links_in_a_circle_are_refused(self):
        (self.folder / "a.csv").symlink_to("b.csv")
        (self.folder / "b.csv").symlink_to("a.csv")
        self.refused(
            self.run_it(*COX, "--baseline", "a.csv"),
            1,
            "survmeth cox: a.csv: cannot be written: Too many levels of symbolic links\n",
        )

    def test_a_replaced_file_keeps_its_mode(self):
        old = self.folder / "old.csv"
        old.write_text("old")
        old.chmod(0o640)
        self.assertEqual(self.run_it(*COX, "--baseline", "old.csv").returncode, 0)
        self.assertTrue(self.text("old.csv").startswith(BASELINE_HEAD))
        self.assertEqual(stat.S_IMODE(old.stat().st_mode), 0o640)

    def test_a_file_without_write_permission_is_refused_before_the_input_is_read(self):
        for name in ("kept.csv", "link.csv"):
            kept = self.folder / "kept.csv"
            kept.write_text("kept")
            kept.chmod(0o444)
            if name == "link.csv":
                (self.folder / name).symlink_to("kept.csv")
            self.refused(
                self.run_it("cox", "absent.csv", *COX[2:], "--baseline", name),
                1,
                f"survmeth cox: {name}: cannot be written: Permission denied\n",
            )
            self.assertEqual(self.text("kept.csv"), "kept")
            kept.chmod(0o644)

    # One file in two parts.

    def test_the_input_is_not_written_over(self):
        (self.folder / "link.csv").symlink_to("trial.csv")
        os.link(self.folder / "trial.csv", self.folder / "hard.csv")
        (self.folder / "sub").mkdir()
        for name in ("trial.csv", "./trial.csv", "sub/../trial.csv", "link.csv", "hard.csv"):
            self.refused(
                self.run_it(*COX, "--residuals", name),
                2,
                f"survmeth cox: --residuals: {name} is the input; expected another place\n",
            )
        self.assertEqual(self.text("trial.csv"), TRIAL)
        with open(self.folder / "trial.csv", encoding="utf-8") as data:
            result = self.run_it("cox", "-", *COX[2:], "--residuals", "trial.csv", stdin=data)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(self.text("trial.csv"), TRIAL)

    def test_the_input_in_the_folder_of_the_files_is_not_written_over(self):
        os.rename(self.folder / "trial.csv", self.folder / "summary.csv")
        self.refused(
            self.run_it("life", "summary.csv", *LIFE[2:], "--out", "."),
            2,
            "survmeth life: --out: ./summary.csv is the input; expected another place\n",
        )
        self.assertEqual(self.text("summary.csv"), TRIAL)

    def test_one_file_for_two_outputs_is_refused(self):
        for first, second in (("a.csv", "a.csv"), ("a.csv", "./a.csv"), ("link.csv", "a.csv")):
            if first == "link.csv":
                (self.folder / first).symlink_to("a.csv")
            result = self.run_it(*COX, "--residuals", first, "--baseline", second)
            self.refused(
                result,
                2,
                f"survmeth cox: --baseline: {second} is also the file of --residuals; "
                "expected another place\n",
            )
            self.assertFalse((self.folder / "a.csv").exists())

    def test_the_file_of_standard_output_is_not_replaced(self):
        with open(self.folder / "all.txt", "w", encoding="utf-8") as output:
            result = self.run_it(*COX, "--baseline", "all.txt", stdout=output)
        self.assertEqual(
            (result.stderr, result.returncode),
            (
                "survmeth cox: --baseline: all.txt is where standard output goes; "
                "expected another place\n",
                2,
            ),
        )

    def test_standard_output_is_not_added_to_the_input(self):
        with open(self.folder / "trial.csv", "a", encoding="utf-8") as output:
            result = self.run_it(*COX, stdout=output)
        self.assertEqual(
            (result.stderr, result.returncode),
            (
                "survmeth cox: standard output goes into the input trial.csv; "
                "expected another place\n",
                2,
            ),
        )
        self.assertEqual(self.text("trial.csv"), TRIAL)

    def test_dev_null_may_be_given_twice(self):
        (self.folder / "null").symlink_to("/dev/null")
        result = self.run_it(*COX, "--residuals", "null", "--baseline", "null")
        self.assertEqual((result.stderr, result.returncode), ("", 0))
        self.assertTrue((self.folder / "null").is_symlink())


if __name__ == "__main__":
    run()
