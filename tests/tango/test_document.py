"""The page on the device server tells the attributes that the server has."""

import os
import subprocess
import unittest

PAGE = os.path.join(os.environ["KORA_SOURCE_FOLDER"], "docs", "tango.md")


class DocumentTest(unittest.TestCase):
    def test_the_table_of_attributes_is_the_one_of_the_server(self):
        environment = dict(os.environ, LD_LIBRARY_PATH=os.environ["KORA_SCRIPTED_LIBRARY"])
        table = subprocess.run([os.environ["KORA_TANGO_SERVER"], "--attributes"], env=environment, capture_output=True,
                               text=True, check=True).stdout
        with open(PAGE) as page:
            self.assertIn(table, page.read())


if __name__ == "__main__":
    unittest.main(verbosity=2)
