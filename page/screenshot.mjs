// Takes the picture of the README: the map and the listing of an example.
//
//     node page/screenshot.mjs OUTPUT      (from the project's folder, after tools/page)
import { launch, openPage, seen } from "./tests/page.mjs";

const [output] = process.argv.slice(2);
const browser = await launch();
try {
  const page = await openPage(browser, { width: 1180, height: 720 });
  await page.click("#example-kv");
  await seen(page, "#listing .cm-line", /^; id:/);
  await page.$eval("#listing .cm-scroller", (scroller) => scroller.scrollTo(0, 690));
  await seen(page, "#listing .cm-line", "What else shall I shed");
  await page.mouse.move(640, 20);
  await page.evaluate(() => document.activeElement.blur());
  await new Promise((resolve) => setTimeout(resolve, 500));
  await page.screenshot({ path: output });
} finally {
  await browser.close();
}
