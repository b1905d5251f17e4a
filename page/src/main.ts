// Puts the page together.
import type { Requests as DrawingRequests } from "./drawing/protocol";
import type { Requests as LibraryRequests } from "./library/protocol";
import { Workers } from "./remote/workers";
import { games, type Game } from "./script/script";
import { Editing } from "./state/editing";
import { hasUnsaved, initialState } from "./state/state";
import { Store } from "./state/store";
import { Workbench } from "./state/workbench";
import { byId } from "./ui/dom";
import { drawBar } from "./views/bar";
import { drawBytes } from "./views/bytes";
import { drawCompare } from "./views/compare/view";
import { ListingView } from "./views/listing/view";
import { MapView } from "./views/map/view";
import { drawMessages } from "./views/messages";
import { drawScriptBar } from "./views/script_bar";
import { drawScripts } from "./views/scripts";
import { drawTexts } from "./views/texts/table";
import { drawWelcome, examples } from "./views/welcome";

// A script that takes longer is ended.
const secondsForScript = 15;
const secondsForPicture = 20;

// The library compiled to WebAssembly, for each worker to make its own from.
function compileLibrary(): Promise<WebAssembly.Module> {
  return WebAssembly.compile(Uint8Array.from(atob(LIBRARY_WASM), (character) => character.charCodeAt(0)));
}

const rememberedGame = "varsul-game";

// The browser may keep nothing for pages from the disk.
function recall(): Game {
  try {
    const game = localStorage.getItem(rememberedGame) as Game;
    return games.includes(game) ? game : "kv";
  } catch {
    return "kv";
  }
}

function remember(game: Game): void {
  try {
    localStorage.setItem(rememberedGame, game);
  } catch {
    // then the next visit asks again
  }
}

async function start(): Promise<void> {
  const most = Math.max(2, Math.min(4, navigator.hardwareConcurrency));
  const library = new Workers<LibraryRequests>(LIBRARY_WORKER, await compileLibrary(), most, secondsForScript);
  const drawing = new Workers<DrawingRequests>(DRAWING_WORKER, null, 1, secondsForPicture);
  const store = new Store(initialState(recall()));
  const workbench = new Workbench(store, library);
  const editing = new Editing(workbench);
  drawBar(workbench, editing);
  drawWelcome(byId("welcome"), workbench);
  drawScripts(byId("scripts"), workbench);
  drawTexts(byId("texts"), workbench, editing);
  const listing = new ListingView(byId("listing"), workbench, editing);
  drawScriptBar(byId("script-bar"), workbench, editing, listing.flush);
  new MapView(byId("map"), workbench, drawing);
  drawBytes(byId("bytes"), workbench);
  drawCompare(byId("compare"), workbench);
  drawMessages(byId("messages"), workbench);
  const isOfScript = () => ["listing", "map", "bytes"].includes(store.state.view);
  store.listen(({ view, scripts, game }, before) => {
    const isEmpty = scripts.length === 0;
    byId("scripts").hidden = isEmpty || view !== "scripts";
    byId("texts").hidden = isEmpty || view !== "texts";
    byId("compare").hidden = isEmpty || view !== "compare";
    byId("script").hidden = isEmpty || !isOfScript();
    if (game !== before.game) remember(game);
  });
  addEventListener("beforeunload", (event) => {
    listing.flush();
    if (store.state.scripts.some(hasUnsaved)) event.preventDefault();
  });
  const example = await workbench.warmUp(examples).catch(() => "");
  requestIdleCallback(() => listing.rehearse(example));
}

void start();
